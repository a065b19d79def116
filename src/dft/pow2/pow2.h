// One-dimensional complex transforms of power-of-two length, in place: descriptor routines, threaded forms, tables.
//
// Spectra are in natural order if the record's `ordering` is 48, otherwise in bit-reversed order (element k at the
// index of k's log2_length bits reversed), which the backward transform then expects. Results carry the record's scale
// factor.
#pragma once

#include "dft/base/record.h"

namespace dft {

/// Descriptor routines (DftRoutine): transform `input` in place and ignore `output` and `work`. The record has a
/// power-of-two `length`, its `log2_length` and a table filled for it. DFT_OK or DFT_NO_MEMORY.
std::int32_t c1d_forward_pow2(void* input, void* output, DftDescriptor* record, void* work);
std::int32_t c1d_backward_pow2(void* input, void* output, DftDescriptor* record, void* work);
std::int32_t z1d_forward_pow2(void* input, void* output, DftDescriptor* record, void* work);
std::int32_t z1d_backward_pow2(void* input, void* output, DftDescriptor* record, void* work);

/// The same in sub-transforms that run at once (DftThreadedRoutine): as many as the largest power of two up to
/// `threads`. They give the routines' bytes as long as none is shorter than a block (schedule.h); below that, radix-2
/// passes replace some radix-4 ones and rounding differs.
std::int32_t c1d_forw_dft(void* data, std::int32_t threads, DftDescriptor* record);
std::int32_t c1d_back_dft(void* data, std::int32_t threads, DftDescriptor* record);
std::int32_t z1d_forw_dft(void* data, std::int32_t threads, DftDescriptor* record);
std::int32_t z1d_back_dft(void* data, std::int32_t threads, DftDescriptor* record);

/// Fill a record's table (commit_table.h) for the variant in force. `block` has (3 * n / 2 + 64) * 8 bytes (single) or
/// (3 * n + 64) * 8 (double), n = 2^log2_length, on a multiple of 16 bytes.
void c1d_table_build(int log2_length, void* block);
void z1d_table_build(int log2_length, void* block);

} // namespace dft
