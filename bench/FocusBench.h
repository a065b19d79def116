// The spatial operations of CImageFocus beside those of a peer that give the same picture.
#pragma once

#include "Picture.h"
#include "simd/VectorClass.h"

#include <vector>

namespace bench {

/// Holds every operation, in every vector class named, to the peer's result on a small picture. Prints each difference
/// and returns false where there is one.
bool CheckFocusOperations(const std::vector<simd::VectorClass>& classes);

/// Registers `OPERATION/WIDTHxHEIGHT/SUBJECT` for each picture and operation, where SUBJECT is `claribox:CLASS` for
/// each vector class, then the peers. Counters: `ns_per_pixel`; for Claribox `working_KiB`, the peak of heap memory
/// beyond the operation's three byte planes.
void RegisterFocusBenchmarks(const std::vector<Picture>& pictures, const std::vector<simd::VectorClass>& classes);

} // namespace bench
