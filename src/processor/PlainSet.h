// The plain members as a set, which stands in the table until the load has filled it.
#pragma once

#include "kernels/rows/PlainMembers.h"

namespace processor {

inline constexpr KernelTableSlots plainSet = {
    .Copy = kernels::Copy,
    .PackS32ToU8 = kernels::PackS32ToU8,
    .PackF32ToU8 = kernels::PackF32ToU8,
    .ExpandU8ToF32 = kernels::ExpandU8ToF32,
    .ScaleF32 = kernels::ScaleF32,
    .DotF32 = kernels::DotF32,
    .DecimateU8 = kernels::DecimateU8,
    .ExpandU8ToComplex = kernels::ExpandU8ToComplex,
    .PackComplexToU8 = kernels::PackComplexToU8,
    .ExpandF32ToComplex = kernels::ExpandF32ToComplex,
};

} // namespace processor
