// A rounding to float that really happens.
#pragma once

#include <cfloat>

namespace kernels {

/// `value` rounded to float. The x87 unit keeps results in wider registers, and a compiler may leave a plain conversion
/// out there; a store to memory rounds on every processor, so that all give the same kernels.
inline float RoundToFloat(double value) {
    if constexpr (FLT_EVAL_METHOD == 0) {
        return static_cast<float>(value);
    } else {
        volatile float rounded = static_cast<float>(value);
        return rounded;
    }
}

} // namespace kernels
