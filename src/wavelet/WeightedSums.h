// The arithmetic of the wavelet engine, in one form a vector class.
#pragma once

#include "simd/VectorClass.h"

namespace wavelet {

/// Row functions over floats at any address. None reads or writes beyond `count`.
struct LineFunctions {
    /// out[x] = sources[0][x] * weights[0] + sources[1][x] * weights[1] + ..., from 0.0 and in this order: each product
    /// is added exactly and the sum rounded to float once before the next, as a fused multiply-add does.
    void (*WeightedSum)(const float* const* sources, const float* weights, int terms, float* out, int count);
};

CLARIBOX_PER_VECTOR_CLASS(LineFunctions, kLineFunctions, ActiveLineFunctions)

} // namespace wavelet
