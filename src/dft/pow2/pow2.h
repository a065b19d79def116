// One-dimensional complex transforms of power-of-two length, in place: routine slots, threaded forms, tables.
//
// Spectra come out in natural order where the record's `ordering` is 48; any other value leaves them in bit-reversed
// order (element k stands at the index of k's log2_length bits reversed), and the backward transform then takes that
// order. Results are multiplied by the record's scale factor of the direction and precision.
#pragma once

#include "dft/base/record.h"

namespace dft {

/// Routine slots (DftRoutine): transform `input` in place and look at neither `output` nor `work`. The record has a
/// power-of-two `length`, its `log2_length` and a table filled for it. DFT_OK, or DFT_NO_MEMORY.
std::int32_t c1d_forward_pow2(void* input, void* output, DftDescriptor* record, void* work);
std::int32_t c1d_backward_pow2(void* input, void* output, DftDescriptor* record, void* work);
std::int32_t z1d_forward_pow2(void* input, void* output, DftDescriptor* record, void* work);
std::int32_t z1d_backward_pow2(void* input, void* output, DftDescriptor* record, void* work);

/// The same in pieces (DftThreadedRoutine): with P the largest power of two up to `threads`, P parts of the data are
/// transformed at once. The result has the slots' bytes where a part is no shorter than a block (pow2_form.h). Shorter
/// parts have radix-2 passes in place of some radix-4 ones, and differ in rounding.
std::int32_t c1d_forw_dft(void* data, std::int32_t threads, DftDescriptor* record);
std::int32_t c1d_back_dft(void* data, std::int32_t threads, DftDescriptor* record);
std::int32_t z1d_forw_dft(void* data, std::int32_t threads, DftDescriptor* record);
std::int32_t z1d_back_dft(void* data, std::int32_t threads, DftDescriptor* record);

/// Fill the table of a record, for the variant in force: what stands where is told in commit_table.h. `block` holds
/// (3 * n / 2 + 64) * 8 bytes (single) or (3 * n + 64) * 8 (double), n = 2^log2_length, on a multiple of 16 bytes.
void c1d_table_build(int log2_length, void* block);
void z1d_table_build(int log2_length, void* block);

} // namespace dft
