// Samples between pixels and coefficients, and the shrinkage of these, in one form a vector class.
#pragma once

#include "simd/VectorClass.h"

#include <cstdint>

namespace denoise {

/// Functions over `count` samples at any address.
struct SampleRows {
    void (*Load)(const std::uint8_t* pixels, float* samples, std::ptrdiff_t count);

    /// Rounds to pixels, halves up, and limits the samples in place as well: what lies above 255 is set to 254.5, and
    /// an unordered value counts as below 0.
    void (*Restore)(float* samples, std::uint8_t* pixels, std::ptrdiff_t count);

    /// The rules of CImageDenoiser::SetThresholdType (D. L. Donoho, 1995; H.-Y. Gao, 1998, for the garrote). What is
    /// below the threshold in magnitude becomes 0; for the rest the rule is rounded to float once, for which the soft
    /// rule needs no wider type.
    void (*Shrink[3])(float* samples, float threshold, std::ptrdiff_t count);
};

CLARIBOX_PER_VECTOR_CLASS(SampleRows, kSampleRows, ActiveSampleRows)

} // namespace denoise
