// Jobs: all ranks, strides, offsets, distances and numbers of transforms, on one thread or several. Both give the same
// bytes, except for transforms of one job that share elements, and for one line of a power of two on more threads than
// it has blocks (pow2/schedule.h).
#pragma once

#include "dft/base/record.h"

#include <cstdint>

namespace dft {

/// All transforms of a committed complex job on up to `threads` threads; jobs below the variant's limits stay on the
/// calling one. Pointers are the caller's; offsets are added here. In place, by the head's placement, `output` is
/// ignored. Out of place, the whole of `data` is first copied to the output and all passes run there; the two share no
/// element. DFT_OK, DFT_NO_MEMORY, or the first other status of a descriptor routine.
template <typename Real>
std::int32_t RunJob(DftDescriptor* head, Direction direction, Complex<Real>* data, Complex<Real>* output, int threads);

/// The same for a real job, of rank 1. Strides, offsets and distances count real elements. A line has `length`
/// elements on the real side; on the packed side `length`, or one or two more with format 54.
template <typename Real>
std::int32_t RunJob(DftDescriptor* head, Direction direction, Real* data, Real* output, int threads);

} // namespace dft
