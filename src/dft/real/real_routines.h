// What commit needs of the real domain.
#pragma once

#include "dft/base/record.h"
#include "dft/real/real_plan.h"

namespace dft {

/// Installs a record's real descriptor routines and pack stages for its precision and packed format, builds its real
/// plan and stores the bytes of work memory in `workspace_need`. DFT_OK, DFT_UNSUPPORTED for another format,
/// DFT_NO_MEMORY or DFT_KERNEL_FAILURE.
///
/// Forward, the routine takes `length` real elements to the packed format and scales `length` of them, one more with
/// DFT_PACK_FULL. Backward, it takes the packed format to `length` real elements and scales these; in place with
/// DFT_PACK_FULL, element `length` becomes 0. In place or disjoint.
template <typename Real>
std::int32_t InstallReal(DftDescriptor& record);

} // namespace dft
