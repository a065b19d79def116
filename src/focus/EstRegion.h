// How large a picture counts as, where its size decides what is done with it.
#pragma once

#include "kernels/numbers/WrappingArithmetic.h"

namespace focus {

/// The number of pixels, modulo 2^32. Given: decisions by size, such as that of FoHalfSizePixels, use this product as
/// it wraps; a wider one would decide differently for pictures beyond 2^31 pixels, which no test can hold.
constexpr int PixelCount(int width, int height) {
    return kernels::WrapMultiply(width, height);
}

} // namespace focus
