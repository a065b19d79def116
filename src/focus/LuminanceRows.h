// Weighted sums of red, green and blue, in one form a vector class.
#pragma once

#include "PackedPixels.h"
#include "simd/VectorClass.h"

#include <cstdint>

namespace focus {

/// Row functions that store `count` samples of luminance; planes and luminance may be the same.
struct LuminanceRows {
    /// (77 * red + 150 * green + 29 * blue) / 256, truncated: white is 255.
    void (*Guess)(const PlaneRow& planes, std::uint8_t* luminance, int count);

    /// The same of samples 0, 2, 4 .. of the planes; these do not overlap the luminance.
    void (*GuessEverySecond)(const PlaneRow& planes, std::uint8_t* luminance, int count);

    /// (19595 * red + 38469 * green + 7471 * blue) / 65536, truncated. Required: the weights add up to 65535, so that
    /// white is 254 (EstRegionTest.TheLuminancePlaneIsWeighedWith65535Parts).
    void (*Video)(const PlaneRow& planes, std::uint8_t* luminance, int count);
};

CLARIBOX_PER_VECTOR_CLASS(LuminanceRows, kLuminanceRows, ActiveLuminanceRows)

} // namespace focus
