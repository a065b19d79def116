// Status codes of plans and the normalisations they offer.
#pragma once

#include "dft/base/record.h"

#include <cstdint>

namespace dft {

/// Status codes of this layer.
enum PlanStatus : std::int32_t {
    kPlanOk = 0,
    kPlanBadLength = -6,
    kPlanNullPointer = -8,
    kPlanNoMemory = -9,
    kPlanBadOrder = -15, ///< `order` of an FFT plan outside 0 to 30
    kPlanBadNormalisation = -16,
    kPlanBadTag = -17,
};

/// Values of `norm_flag`.
enum PlanNormalisation : std::int32_t {
    kForwardByLength = 1,  ///< the forward run multiplies by 1/n
    kBackwardByLength = 2, ///< the backward run multiplies by 1/n
    kBothBySquareRoot = 4, ///< both multiply by 1/sqrt(n)
    kUnscaled = 8,
};

/// DFT_OK, DFT_NO_MEMORY, or DFT_KERNEL_FAILURE for every other plan status.
inline std::int32_t StatusOfPlan(std::int32_t planStatus) {
    switch (planStatus) {
    case kPlanOk:
        return DFT_OK;
    case kPlanNoMemory:
        return DFT_NO_MEMORY;
    default:
        return DFT_KERNEL_FAILURE;
    }
}

} // namespace dft
