// What commit and free need of the real domain: the routine slots of a record, and the making of its plan.
#pragma once

#include "dft/base/record.h"
#include "dft/real/real_plan.h"

namespace dft {

/// DftRoutine: `length` real elements to the record's packed format, through `real_pack_forward_*` with the record's
/// real plan; then, where the scale factor is not 1, SSCAL (or its like in double precision) over `length` elements,
/// one more with DFT_PACK_FULL. Input and output are the same or do not overlap; only the same two change the input.
std::int32_t real_forward_single(void* input, void* output, DftDescriptor* record, void* work);
std::int32_t real_forward_double(void* input, void* output, DftDescriptor* record, void* work);

/// DftRoutine: the record's packed format to `length` real elements, scaled where the factor is not 1. In place with
/// DFT_PACK_FULL, element `length` of the array becomes 0.
std::int32_t real_backward_single(void* input, void* output, DftDescriptor* record, void* work);
std::int32_t real_backward_double(void* input, void* output, DftDescriptor* record, void* work);

/// Stores the pair of `real_pack_*` routines of the record's precision and packed format. False, with nothing stored,
/// for a format other than the three.
bool install_pack_stages(DftDescriptor* record);

/// Builds the real plan of the record's precision and length (`plan_real_*`) and stores its bytes of work memory in
/// `workspace_need`. A plan status (plans/dft_plan.h); on failure the plan is null.
std::int32_t install_real_plan(DftDescriptor* record);

} // namespace dft
