// Two rows of real samples as one row of complex elements, in one form a vector class: the transform of a + i b holds
// those of a and of b, which the symmetries of real spectra separate (Brigham, "The Fast Fourier Transform", chapter
// 10).
#pragma once

#include "claribox/KernelTable.h"
#include "simd/VectorClass.h"

namespace kernels {

/// Functions over rows of `count` samples and half spectra of count / 2 + 1 elements, at any address.
struct RowPairs {
    /// row[k] = (a[k] + i b[k]) / 2.
    void (*Pack)(const float* a, const float* b, ChComplex* row, int count);
    /// The reverse without the half: a[k] is the real part, b[k] the imaginary one.
    void (*Unpack)(const ChComplex* row, float* a, float* b, int count);

    /// The half spectra of a and b from the transform of what Pack() made.
    void (*Separate)(const ChComplex* row, ChComplex* a, ChComplex* b, int count);
    /// The spectrum of a + i b. Elements 0 and, of an even count, count / 2 of a half spectrum are real: their
    /// imaginary parts are not read.
    void (*Combine)(const ChComplex* a, const ChComplex* b, ChComplex* row, int count);
};

CLARIBOX_PER_VECTOR_CLASS(RowPairs, kRowPairs, ActiveRowPairs)

} // namespace kernels
