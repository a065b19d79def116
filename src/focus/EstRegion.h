// Sizes that decide how a picture is looked at.
#pragma once

#include "kernels/numbers/WrappingArithmetic.h"

namespace focus {

/// The number of pixels as decisions go by it, in 32 bits.
constexpr int PixelCount(int width, int height) {
    return kernels::WrapMultiply(width, height);
}

} // namespace focus
