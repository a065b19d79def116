// The jobs below the checks of a compute call: all ranks, strides, offsets, distances and numbers of transforms, on one
// thread or on several. Both forms give the same bytes, with two exceptions: transforms of one job that share elements,
// and one line of a power of two on more threads than it has blocks (pow2/schedule.h), where other passes round
// otherwise.
#pragma once

#include "dft/base/record.h"

#include <cstdint>

namespace dft {

/// All transforms of a committed complex job on up to `threads` threads; jobs below the limits of the variant in force
/// stay on the calling one. The pointers are the caller's own; offsets are added here. In place, as the head's
/// placement says, `output` is not looked at. Out of place the whole of `data` is copied to the output, from the input
/// strides to the output strides, and all passes run there; the elements of the two do not overlap. DFT_OK,
/// DFT_NO_MEMORY, or the first other status of a descriptor routine.
template <typename Real>
std::int32_t RunJob(DftDescriptor* head, Direction direction, Complex<Real>* data, Complex<Real>* output, int threads);

/// The same of a real job, of rank 1. Strides, offsets and distances count real elements. A line has `length` elements
/// on the real side; on the packed side `length`, with format 54 one or two more.
template <typename Real>
std::int32_t RunJob(DftDescriptor* head, Direction direction, Real* data, Real* output, int threads);

} // namespace dft
