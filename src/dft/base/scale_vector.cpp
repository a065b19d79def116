#include "dft/base/scale_vector.h"

extern "C" void sscal_(const int* count, const float* scale, float* x, const int* increment);

namespace dft {

void ScaleVector(const int* count, const float* scale, float* x, const int* increment) {
    if (*count < 1) {
        return;
    }
    // The linked routine does nothing for a negative increment.
    const auto magnitude = static_cast<unsigned int>(*increment);
    const int step = static_cast<int>(*increment < 0 ? 0 - magnitude : magnitude);
    sscal_(count, scale, x, &step);
}

} // namespace dft
