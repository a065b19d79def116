// From the status codes of plans to those of descriptors.
#pragma once

#include "dft/dft.h"
#include "dft/plans/dft_plan.h"

namespace dft {

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
