// The sixteen filter sets as a table.
#pragma once

#include "wavelet/WaveletFilterSet.h"

#include <cstdint>

struct FilterShape {
    int count;
    int first;
};

struct FilterSetRow {
    const char* name;
    const WaveletFilterSet* set;
    int mirror;
    FilterShape analysis;
    FilterShape synthesis;
    int margin;
    std::uint32_t checksum; // over the bits of both low-pass filters: FNV-1a, 32 bits, low byte of a float first
};

inline constexpr FilterSetRow kFilterSets[] = {
    {"Haar", &FilterSetHaar, 0, {2, 0}, {2, 0}, 2, 0xB0726F6Du},
    {"Daub4", &FilterSetDaub4, 0, {4, 0}, {4, 0}, 4, 0xAD723215u},
    {"Daub6", &FilterSetDaub6, 0, {6, 0}, {6, 0}, 6, 0xE942BD01u},
    {"Daub8", &FilterSetDaub8, 0, {8, 0}, {8, 0}, 8, 0x2CC95879u},
    {"Cdf97", &FilterSetCdf97, 1, {9, -4}, {7, -3}, 9, 0xEC9E82E5u},
    {"10x18", &FilterSet10x18, 1, {10, -4}, {18, -8}, 18, 0x97AC2D01u},
    {"Sym9", &FilterSetSym9, 1, {9, -4}, {9, -4}, 9, 0xB1BBA4E1u},
    {"Cdf97b", &FilterSetCdf97b, 1, {9, -4}, {7, -3}, 9, 0xEC9E82E5u},
    {"10x10", &FilterSet10x10, 1, {10, -4}, {10, -4}, 10, 0x0589CD49u},
    {"Cdf97c", &FilterSetCdf97c, 1, {9, -4}, {7, -3}, 9, 0xEC9E82E5u},
    {"13x11", &FilterSet13x11, 1, {13, -6}, {11, -5}, 13, 0x6C889383u},
    {"6x10", &FilterSet6x10, 1, {6, -2}, {10, -4}, 10, 0x807F75D1u},
    {"5x3", &FilterSet5x3, 1, {5, -2}, {3, -1}, 5, 0xD40583A3u},
    {"2x6", &FilterSet2x6, 1, {2, 0}, {6, -2}, 6, 0x5A9D9E05u},
    {"9x3", &FilterSet9x3, 1, {9, -4}, {3, -1}, 9, 0x03C0F8E9u},
    {"Denoise", &FilterSetDenoise, 1, {9, -4}, {7, -3}, 9, 0x039FD617u},
};
