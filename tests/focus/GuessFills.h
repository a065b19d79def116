// Samples of made pictures for the region search and the guess, each a function of column and row.
#pragma once

#include <cstdint>

using Fill = std::uint8_t (*)(int x, int y);

inline std::uint32_t Hash(int x, int y) {
    std::uint32_t h = static_cast<std::uint32_t>(x) * 0x9E3779B1u ^ static_cast<std::uint32_t>(y) * 0x85EBCA77u;
    h = (h ^ h >> 15) * 0x2C1B3C6Du;
    h = (h ^ h >> 12) * 0x297A2D39u;
    return h ^ h >> 15;
}

inline std::uint8_t Noise(int x, int y) {
    return static_cast<std::uint8_t>(Hash(x, y));
}
inline std::uint8_t Constant(int, int) {
    return 137;
}
inline std::uint8_t BlackOrWhite(int x, int y) {
    return Hash(x, y) & 1u ? 255 : 0;
}
inline std::uint8_t Rows(int, int y) {
    return y % 2 == 0 ? 40 : 201;
}
inline std::uint8_t Columns(int x, int) {
    return x % 2 == 0 ? 40 : 201;
}
inline std::uint8_t RisingLines(int x, int y) {
    return Noise(x + y, 0);
}
inline std::uint8_t FallingLines(int x, int y) {
    return Noise(x - y, 0);
}
// Smooth in places: many pixels lie between their neighbours, or equal them.
inline std::uint8_t Smeared(int x, int y) {
    int sum = 0;
    for (int k = 0; k < 8; ++k) {
        sum += Noise((3 * x + y) / 4 + k, y / 3);
    }
    return static_cast<std::uint8_t>(sum / 8);
}
// Flat but for a patch.
inline std::uint8_t BusyPatch(int x, int y) {
    return x >= 470 && x < 690 && y >= 610 && y < 830 ? Noise(x, y) : static_cast<std::uint8_t>(90);
}
// The same in every block, so that windows tie but for a step of the mean.
inline std::uint8_t EqualBlocks(int x, int y) {
    return static_cast<std::uint8_t>(x % 8 * 9 + y % 8 * 5 + (x / 64 + y / 72) % 2);
}
