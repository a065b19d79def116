// The guess of a motion's direction beside its plain form.
#pragma once

#include "Picture.h"
#include "simd/VectorClass.h"

#include <vector>

namespace bench {

/// Holds the guess, in every vector class named, to the plain form's on small pictures. Prints each difference and
/// returns false where there is one.
bool CheckGuess(const std::vector<simd::VectorClass>& classes);

/// Registers `ChGuessMotionDirection/WIDTHxHEIGHT/SUBJECT`, on the luminance of at most 512 by 512 pixels at the top
/// left of each picture, and `GuessMotionDegree/WIDTHxHEIGHT/SUBJECT`, the whole guess on each picture. SUBJECT is
/// `claribox:CLASS` for each vector class, then `plain`. Counter: `ns_per_pixel`.
void RegisterGuessBenchmarks(const std::vector<Picture>& pictures, const std::vector<simd::VectorClass>& classes);

} // namespace bench
