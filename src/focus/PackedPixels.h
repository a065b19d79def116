// Split of packed pixels into colour planes and back, in one form a vector class.
#pragma once

#include "simd/VectorClass.h"

#include <cstdint>

namespace focus {

/// The planes of one row, in the order red, green, blue: bytes 2, 1 and 0 of a packed pixel.
struct PlaneRow {
    std::uint8_t* first;
    std::uint8_t* second;
    std::uint8_t* third;
};

/// Row functions for `count` pixels. The fourth byte of a 32-bit pixel is neither read nor written.
struct PackedPixelRows {
    void (*SplitBGR24)(const std::uint8_t* pixels, const PlaneRow& planes, int count);
    void (*SplitBGRX32)(const std::uint8_t* pixels, const PlaneRow& planes, int count);
    void (*MergeBGR24)(std::uint8_t* pixels, const PlaneRow& planes, int count);
    void (*MergeBGRX32)(std::uint8_t* pixels, const PlaneRow& planes, int count);
};

CLARIBOX_PER_VECTOR_CLASS(PackedPixelRows, kPackedPixelRows, ActivePackedPixelRows)

} // namespace focus
