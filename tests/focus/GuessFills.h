// Samples of made pictures for the region search and the guess, each a function of column and row.
#pragma once

#include "common/GuardedBuffer.h"

#include <cstdint>
#include <vector>

using Fill = std::uint8_t (*)(int x, int y);

inline std::uint32_t Hash(int x, int y) {
    std::uint32_t h = static_cast<std::uint32_t>(x) * 0x9E3779B1u ^ static_cast<std::uint32_t>(y) * 0x85EBCA77u;
    h = (h ^ h >> 15) * 0x2C1B3C6Du;
    h = (h ^ h >> 12) * 0x297A2D39u;
    return h ^ h >> 15;
}

inline constexpr Fill kNoise = [](int x, int y) { return static_cast<std::uint8_t>(Hash(x, y)); };
inline constexpr Fill kConstant = [](int, int) { return std::uint8_t{137}; };
inline constexpr Fill kBlackOrWhite = [](int x, int y) { return static_cast<std::uint8_t>(Hash(x, y) % 2 * 255); };
inline constexpr Fill kRows = [](int, int y) { return static_cast<std::uint8_t>(y % 2 == 0 ? 40 : 201); };
inline constexpr Fill kColumns = [](int x, int) { return kRows(0, x); };
inline constexpr Fill kRisingLines = [](int x, int y) { return kNoise(x + y, 0); };
inline constexpr Fill kFallingLines = [](int x, int y) { return kNoise(x - y, 0); };
// Smooth in places: many pixels lie between their neighbours, or equal them.
inline constexpr Fill kSmeared = [](int x, int y) {
    int sum = 0;
    for (int k = 0; k < 8; ++k) {
        sum += kNoise((3 * x + y) / 4 + k, y / 3);
    }
    return static_cast<std::uint8_t>(sum / 8);
};
// Flat but for a patch.
inline constexpr Fill kBusyPatch = [](int x, int y) {
    return x >= 470 && x < 690 && y >= 610 && y < 830 ? kNoise(x, y) : std::uint8_t{90};
};
// The same in every block, so that windows tie but for a step of the mean.
inline constexpr Fill kEqualBlocks = [](int x, int y) {
    return static_cast<std::uint8_t>(x % 8 * 9 + y % 8 * 5 + (x / 64 + y / 72) % 2);
};

inline void FillPlane(GuardedBuffer<std::uint8_t>& plane, int width, Fill fill) {
    for (std::size_t k = 0; k < plane.size(); ++k) {
        plane.Write(k, fill(static_cast<int>(k) % width, static_cast<int>(k) / width));
    }
}

inline std::vector<std::uint8_t> CopyOf(const GuardedBuffer<std::uint8_t>& plane) {
    return {plane.data(), plane.data() + plane.size()};
}
