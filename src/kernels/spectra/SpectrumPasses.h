// Passes over whole spectra, in one form a vector class.
#pragma once

#include "claribox/KernelTable.h"
#include "simd/VectorClass.h"

#include <cstddef>

namespace kernels {

/// Arithmetic goes in double precision; a stored part is rounded to float once, unless stated otherwise. Every class
/// gives the same bytes, all but the x87 unit, which computes in more than double precision. Pointers need no
/// alignment.
struct SpectrumPasses {
    /// spectrum[k] *= otf[k], then each part times `scale` as a rounding of its own. The product takes three
    /// multiplications: with otf = a + ib and spectrum = c + id, t = b * (c - d), the parts are c * (a - b) + t and
    /// d * (a + b) + t.
    void (*MultiplyAndScale)(const ChComplex* otf, ChComplex* spectrum, std::size_t count, float scale);

    /// otf[k] = conj(otf[k]) / den, where den = re^2 + noise + im^2; a den below 0.01 is raised by 0.01.
    void (*Invert)(ChComplex* otf, std::size_t count, float noise);
};

CLARIBOX_PER_VECTOR_CLASS(SpectrumPasses, kSpectrumPasses, ActiveSpectrumPasses)

} // namespace kernels
