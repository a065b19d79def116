// Squares of numbers turned about their diagonal in registers. For vector sources only.
#pragma once

#include "dft/base/lane_complex.h"
#include "simd/Vector.h"

namespace dft::CLARIBOX_VECTOR_CLASS {

#if !defined(CLARIBOX_VECTOR_Portable)
namespace {

using simd::CLARIBOX_VECTOR_CLASS::Indices;
using simd::CLARIBOX_VECTOR_CLASS::Unrolled;

/// Instructions that stay within 16 bytes, and those that move 16 bytes as a whole, take a cycle each; others do not.
template <typename V>
inline constexpr int kPerBlock = static_cast<int>(16 / sizeof(Real<V>));
template <typename V>
inline constexpr int kBlocks = static_cast<int>(sizeof(V) / 16);

/// In each block of 16 bytes: the lower or upper halves of a and b, in turns of `grain` numbers.
template <int grain, bool upper, typename V, int... k>
inline V InterleaveInBlocks(V a, V b, Indices<0, k...>) {
    constexpr int block = kPerBlock<V>;
    return __builtin_shufflevector(a, b,
                                   (k / block * block + (upper ? block / 2 : 0) + k % block / (2 * grain) * grain +
                                    k % grain + (k / grain % 2 == 1 ? kLines<V> : 0))...);
}

/// The even or odd blocks of a, then those of b.
template <bool odd, typename V, int... k>
inline V AlternateBlocks(V a, V b, Indices<0, k...>) {
    constexpr int block = kPerBlock<V>;
    return __builtin_shufflevector(a, b, (k / block * 2 * block + (odd ? block : 0) + k % block)...);
}

/// a and b become the results for lower and upper halves, or for even and odd blocks.
template <int grain, typename V>
inline void InterleavePair(V& a, V& b) {
    const V lower = InterleaveInBlocks<grain, false>(a, b, Indices<kLines<V>>{});
    b = InterleaveInBlocks<grain, true>(a, b, Indices<kLines<V>>{});
    a = lower;
}
template <typename V>
inline void AlternatePair(V& a, V& b) {
    const V even = AlternateBlocks<false>(a, b, Indices<kLines<V>>{});
    b = AlternateBlocks<true>(a, b, Indices<kLines<V>>{});
    a = even;
}
template <typename V>
inline void Swap(V& a, V& b) {
    const V kept = a;
    a = b;
    b = kept;
}

/// Turns x[0 .. kLines - 1] about their diagonal: number j of x[i] changes places with number i of x[j].
template <typename V>
inline void Transpose(V* x) {
    constexpr int side = kPerBlock<V>;
    Unrolled<kBlocks<V>>([x](int part) { // squares within the blocks
        V* const rows = x + part * side;
        if constexpr (side == 4) {
            InterleavePair<1>(rows[0], rows[1]);
            InterleavePair<1>(rows[2], rows[3]);
            InterleavePair<2>(rows[0], rows[2]);
            InterleavePair<2>(rows[1], rows[3]);
            Swap(rows[1], rows[2]);
        } else {
            InterleavePair<1>(rows[0], rows[1]);
        }
    });
    if constexpr (kBlocks < V >> 1) {
        Unrolled<side>([x](int row) { // the square of blocks
            AlternatePair(x[row], x[row + side]);
            if constexpr (kBlocks<V> == 4) {
                AlternatePair(x[row + 2 * side], x[row + 3 * side]);
                AlternatePair(x[row], x[row + 2 * side]);
                AlternatePair(x[row + side], x[row + 3 * side]);
            }
        });
    }
}

/// Complex elements, kLines numbers in each vector, to their real parts and their imaginary parts, and back.
template <typename V, int... k>
inline LaneComplex<V> Separate(V a, V b, Indices<0, k...>) {
    return {__builtin_shufflevector(a, b, (2 * k)...), __builtin_shufflevector(a, b, (2 * k + 1)...)};
}
template <typename V, int... k>
inline void Join(LaneComplex<V> x, V& a, V& b, Indices<0, k...>) {
    constexpr int half = kLines<V> / 2;
    a = __builtin_shufflevector(x.re, x.im, (k / 2 + k % 2 * kLines<V>)...);
    b = __builtin_shufflevector(x.re, x.im, (half + k / 2 + k % 2 * kLines<V>)...);
}

} // namespace
#endif

} // namespace dft::CLARIBOX_VECTOR_CLASS
