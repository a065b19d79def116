// What commit needs of the real domain.
#pragma once

#include "dft/base/record.h"
#include "dft/real/real_plan.h"

namespace dft {

/// Stores in a record the routines of its precision and packed format, builds its real plan, and stores the plan's
/// bytes of work memory in `workspace_need`. DFT_OK, DFT_UNSUPPORTED for a format other than the three, DFT_NO_MEMORY
/// or DFT_KERNEL_FAILURE.
///
/// Forward, the routine takes `length` real elements to the packed format; then, where the scale factor is not 1, it
/// scales `length` elements, one more with DFT_PACK_FULL. Backward, it takes the packed format to `length` real
/// elements and scales these; in place with DFT_PACK_FULL, element `length` of the array becomes 0. Input and output
/// are the same or do not overlap.
template <typename Real>
std::int32_t InstallReal(DftDescriptor& record);

} // namespace dft
