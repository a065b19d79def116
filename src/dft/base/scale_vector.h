// The routine behind SSCAL.
#pragma once

namespace dft {

/// As SSCAL (dft.h), without the control word.
void ScaleVector(const int* count, const float* scale, float* x, const int* increment);

} // namespace dft
