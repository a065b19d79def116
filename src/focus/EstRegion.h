// Sizes that decide how a picture is looked at.
#pragma once

#include "kernels/WrappingArithmetic.h"

namespace focus {

/// Pixels of the largest picture whose estimation region is told in its own coordinates. The guess looks at half the
/// size from so many on: at exactly this size the two differ, which is required.
inline constexpr int kFullSizePixels = 1700000;

/// The number of pixels as decisions go by it, in 32 bits.
constexpr int PixelCount(int width, int height) {
    return kernels::WrapMultiply(width, height);
}

} // namespace focus
