// The one front door of the DFT engine: discrete Fourier transforms of any length, in one to seven dimensions, single
// or double precision, complex or real, in place or out of place.
//
// A job lives through create, commit, compute (any number of times, either direction) and free. The forward transform
// is X[j] = sum over k of x[k] * exp(-2 pi i j k / n), the backward one has the opposite sign; neither divides by n.
// Oppenheim and Schafer, "Discrete-Time Signal Processing", chapter 8.
#pragma once

#include "dft/base/record.h"

namespace dft {

/// Describes a job of `rank` dimensions, 1 to 7. The last argument is the length itself, an `int`, for rank 1, and a
/// `const int*` to `rank` lengths, slowest dimension first, otherwise: a picture of h rows of w pixels has {h, w}.
/// Stores the new descriptor in `*handle`, or null where it fails after the lengths were found good.
/// DFT_BAD_ARGUMENT, DFT_UNSUPPORTED or DFT_NO_MEMORY on failure, the last also where 64 other threads use the engine.
std::int32_t dfti_create_descriptor(DftDescriptor** handle, int precision, int domain, int rank, ...);

/// Builds all tables and plans, after releasing those of an earlier commit. A descriptor whose commit failed can only
/// be freed. DFT_BAD_ARGUMENT, DFT_BAD_DESCRIPTOR, DFT_UNSUPPORTED, DFT_NO_MEMORY or DFT_KERNEL_FAILURE on failure.
std::int32_t dfti_commit_descriptor(DftDescriptor* handle);

/// Transforms `data`, in place or into `output`, as the descriptor's `placement` says; `output` is not looked at in
/// place. Elements are `Complex<float>` or `Complex<double>`; of real jobs `float` or `double`, and a packed line has n
/// of them, n + 2 (even n) or n + 1 (odd) in the full format. A job has the product of its lengths in elements, times
/// the number of transforms, laid out by the input fields of the records; out of place the output fields lay out
/// `output`, which does not overlap `data`, and `data` stays as it was. Transforms of one job that share elements give
/// what one gives after the other, in no told order where threads are used.
///
/// Several threads may compute with one descriptor. DFT_BAD_ARGUMENT (null handle or data), DFT_BAD_DESCRIPTOR,
/// DFT_NOT_COMMITTED, DFT_NO_MEMORY or DFT_KERNEL_FAILURE on failure; the data is then in no defined state.
std::int32_t dfti_compute_forward(DftDescriptor* handle, void* data, void* output = nullptr);
std::int32_t dfti_compute_backward(DftDescriptor* handle, void* data, void* output = nullptr);

/// Releases the descriptor and all it owns and clears `*handle`. The caller is the thread that created it: the block of
/// a descriptor that another thread frees is not used again. DFT_BAD_ARGUMENT for a null one, DFT_BAD_DESCRIPTOR.
std::int32_t dfti_free_descriptor(DftDescriptor** handle);

/// x[k * |increment|] *= scale for k below `count`: the level-1 operation of the Basic Linear Algebra Subprograms
/// (Lawson, Hanson, Kincaid, Krogh 1979). A count below 1 does nothing.
/// `increment` is not 0.
void SSCAL(const int* count, const float* scale, float* x, const int* increment);

} // namespace dft
