// The one front door of the DFT engine: discrete Fourier transforms of any length, in one to seven dimensions, single
// or double precision, complex or real, in place or out of place.
//
// A job lives through create, commit, compute (any number of times, either direction) and free. The forward transform
// is X[j] = sum over k of x[k] * exp(-2 pi i j k / n), the backward one has the opposite sign; neither divides by n.
// Oppenheim and Schafer, "Discrete-Time Signal Processing", chapter 8.
#pragma once

#include "dft/base/record.h"

namespace dft {

/// Describes a job of `rank` dimensions, 1 to 7. The last argument is the length, an `int`, for rank 1, otherwise a
/// `const int*` to `rank` lengths, slowest dimension first: a picture of h rows of w pixels has {h, w}. Stores the new
/// descriptor in `*handle`, or null if it fails after the lengths were found good. DFT_BAD_ARGUMENT, DFT_UNSUPPORTED
/// or DFT_NO_MEMORY, the last also if 64 other threads use the engine.
std::int32_t dfti_create_descriptor(DftDescriptor** handle, int precision, int domain, int rank, ...);

/// Builds all tables and plans, releasing those of an earlier commit. A descriptor whose commit failed can only be
/// freed. DFT_BAD_ARGUMENT, DFT_BAD_DESCRIPTOR, DFT_UNSUPPORTED, DFT_NO_MEMORY or DFT_KERNEL_FAILURE.
std::int32_t dfti_commit_descriptor(DftDescriptor* handle);

/// Transforms `data` in place, or into `output`, as the descriptor's `placement` says; in place, `output` is ignored.
/// Elements are `Complex<float>` or `Complex<double>`, or for real jobs `float` or `double`; a packed line has n of
/// them, in the full format n + 2 (even n) or n + 1 (odd). A job has the product of its lengths, times the number of
/// transforms, in elements, laid out by the records' input fields; out of place, the output fields lay out `output`,
/// which does not overlap `data`, and `data` is unchanged. Transforms that share elements run one after the other, in
/// unspecified order if threads are used.
///
/// Several threads may compute with one descriptor. DFT_BAD_ARGUMENT (null handle or data), DFT_BAD_DESCRIPTOR,
/// DFT_NOT_COMMITTED, DFT_NO_MEMORY or DFT_KERNEL_FAILURE; the data is then undefined.
std::int32_t dfti_compute_forward(DftDescriptor* handle, void* data, void* output = nullptr);
std::int32_t dfti_compute_backward(DftDescriptor* handle, void* data, void* output = nullptr);

/// Releases the descriptor and all it owns and clears `*handle`. To be called by the thread that created it: a block
/// freed by another thread is not reused. DFT_BAD_ARGUMENT for null, DFT_BAD_DESCRIPTOR.
std::int32_t dfti_free_descriptor(DftDescriptor** handle);

/// x[k * |increment|] *= scale for k below `count`: level 1 of the Basic Linear Algebra Subprograms (Lawson, Hanson,
/// Kincaid, Krogh 1979). Does nothing for a count below 1; `increment` is not 0.
void SSCAL(const int* count, const float* scale, float* x, const int* increment);

} // namespace dft
