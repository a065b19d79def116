#include "claribox/KernelTable.h"

#include "kernels/PlainMembers.h"

// Complete before any initialiser of the process runs.
constinit KernelTableSlots KernelTable = {
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
