// Complex transforms of the DFT engine beside those of FFTW.
#pragma once

#include "simd/VectorClass.h"

#include <vector>

namespace bench {

/// Registers, with SUBJECT `claribox:CLASS` for each vector class and `FFTW`, on one thread and in place:
///
/// - `DFT_2D/WIDTHxHEIGHT/SUBJECT` and `DFT_1D/LENGTHx1/SUBJECT`: a forward transform in single precision, both
///   subjects on the same memory, FFTW with plans of FFTW_MEASURE. Counter: `ns_per_pixel`, nanoseconds an element.
///   Before it is measured, Claribox's result is held to FFTW's; a difference skips the subject with an error.
/// - `DFT_commit/WIDTHxHEIGHT/claribox:CLASS`: creation and commit of a job.
/// - `DFT_error_single/LENGTHx1/SUBJECT` and `DFT_error_double`: nothing timed. Counter: `relative_error`, the L2 norm
///   of the difference from FFTW's long double transform over the L2 norm of that, on random lines.
///
/// FFTW keeps what it learned in measuring in a file of the build folder.
void RegisterDftBenchmarks(const std::vector<simd::VectorClass>& classes);

} // namespace bench
