// The jobs below the checks of a compute call: all ranks, strides, offsets, distances and numbers of transforms, on one
// thread or on several. Both forms give the same bytes, with two exceptions: transforms of one job that share elements,
// and one line of a power of two on more threads than it has blocks (pow2/pow2_form.h), where other passes round
// otherwise.
//
// All pointers are the caller's own; offsets are added here. Results are DFT_OK, DFT_NO_MEMORY, or the first other
// status of a routine slot.
#pragma once

#include "dft/base/record.h"
#include "dft/plans/plan_runs.h"

#include <cstdint>

namespace dft {

/// All transforms of a committed complex job, in place, on the calling thread.
template <typename Real>
std::int32_t RunSerial(DftDescriptor* head, Direction direction, Complex<Real>* data);

/// Out of place: the whole input is copied to the output, from the input strides to the output strides; then all passes
/// run in place on the output. The two do not overlap.
template <typename Real>
std::int32_t RunSerial(DftDescriptor* head, Direction direction, const Complex<Real>* input, Complex<Real>* output);

/// The same on up to `threads` threads, 2 or more. Jobs below the limits of the variant in force run on the calling
/// one.
template <typename Real>
std::int32_t RunThreaded(DftDescriptor* head, Direction direction, Complex<Real>* data, int threads);
template <typename Real>
std::int32_t RunThreaded(DftDescriptor* head, Direction direction, const Complex<Real>* input, Complex<Real>* output,
                         int threads);

/// All transforms of a committed real job, of rank 1, in place. Strides, offsets and distances count real elements. A
/// line has `length` elements on the real side; on the packed side `length`, with format 54 one or two more.
template <typename Real>
std::int32_t RunRealSerial(DftDescriptor* head, Direction direction, Real* data);

/// Out of place; the input stays as it is.
template <typename Real>
std::int32_t RunRealSerial(DftDescriptor* head, Direction direction, const Real* input, Real* output);

/// The same on up to `threads` threads, 2 or more.
template <typename Real>
std::int32_t RunRealThreaded(DftDescriptor* head, Direction direction, Real* data, int threads);
template <typename Real>
std::int32_t RunRealThreaded(DftDescriptor* head, Direction direction, const Real* input, Real* output, int threads);

} // namespace dft
