// Motion deblur of CImageFocus beside the same pipeline on FFTW.
#pragma once

#include "Picture.h"
#include "simd/VectorClass.h"

#include <vector>

namespace bench {

/// Holds DeMotionBlur, in every vector class named, to the pipeline on FFTW on a small picture. Prints each difference
/// and returns false where there is one.
bool CheckMotionDeblur(const std::vector<simd::VectorClass>& classes);

/// Registers `DeMotionBlur_length_15_degree_30/WIDTHxHEIGHT/SUBJECT` for each picture, where SUBJECT is
/// `claribox:CLASS` for each vector class, then `FFTW`: the form of one thread, beside FFTW with plans of FFTW_MEASURE,
/// made beforehand. Counters: `ns_per_pixel`; for Claribox `bytes_per_pixel` and `threaded_bytes_per_pixel`, the peak
/// of heap memory of a whole call in either form over the number of pixels.
void RegisterMotionBenchmarks(const std::vector<Picture>& pictures, const std::vector<simd::VectorClass>& classes);

} // namespace bench
