// Complex pairs in vectors, for the sources of vector members. All functions are static: each source has copies of its
// own, in its own instructions.
#pragma once

#include "claribox/KernelTable.h"

#include <xmmintrin.h>

namespace processor {

/// The real parts of 4 pairs.
static inline __m128 LoadReal(const ChComplex* source) {
    const auto* const parts = reinterpret_cast<const float*>(source);
    return _mm_shuffle_ps(_mm_loadu_ps(parts), _mm_loadu_ps(parts + 4), _MM_SHUFFLE(2, 0, 2, 0));
}

/// Stores 4 reals as pairs.
static inline void StoreComplex(ChComplex* destination, __m128 real) {
    auto* const parts = reinterpret_cast<float*>(destination);
    _mm_storeu_ps(parts, _mm_unpacklo_ps(real, _mm_setzero_ps()));
    _mm_storeu_ps(parts + 4, _mm_unpackhi_ps(real, _mm_setzero_ps()));
}

} // namespace processor
