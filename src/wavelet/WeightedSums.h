// The arithmetic of the wavelet engine, in one form a vector class.
#pragma once

#include "simd/VectorClass.h"

namespace wavelet {

/// Row functions over floats at any address. None reads or writes beyond `count`.
struct LineFunctions {
    /// out[x] = sources[0][x] * weights[0] + sources[1][x] * weights[1] + ..., from 0.0: each product is added in more
    /// than single precision and the sum rounded to float before the next, in this order. A fused multiply-add and a
    /// sum in double that is rounded once serve alike.
    void (*WeightedSum)(const float* const* sources, const float* weights, int terms, float* out, int count);
};

CLARIBOX_VECTOR_VARIANTS(LineFunctions, kLineFunctions, ActiveLineFunctions)

} // namespace wavelet
