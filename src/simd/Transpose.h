// Numbers moved between vectors: square matrices transposed in registers, and complex elements taken apart into real
// and imaginary parts. For vector sources only.
#pragma once

#include "simd/Vector.h"

namespace simd::CLARIBOX_VECTOR_CLASS {

/// Numbers in a vector.
template <typename V>
inline constexpr int kCount = static_cast<int>(sizeof(V) / sizeof(V{}[0]));

/// Instructions that stay within 16 bytes, and those that move 16 bytes as a whole, take a cycle each; others do not.
template <typename V>
inline constexpr int kPerBlock = static_cast<int>(16 / sizeof(V{}[0]));
template <typename V>
inline constexpr int kBlocks = static_cast<int>(sizeof(V) / 16);

/// In each block of 16 bytes: the lower or upper halves of a and b, in turns of `grain` numbers.
template <int grain, bool upper, typename V, int... k>
inline V InterleaveInBlocks(V a, V b, Indices<0, k...>) {
    constexpr int block = kPerBlock<V>;
    return __builtin_shufflevector(a, b,
                                   (k / block * block + (upper ? block / 2 : 0) + k % block / (2 * grain) * grain +
                                    k % grain + (k / grain % 2 == 1 ? kCount<V> : 0))...);
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
    const V lower = InterleaveInBlocks<grain, false>(a, b, Indices<kCount<V>>{});
    b = InterleaveInBlocks<grain, true>(a, b, Indices<kCount<V>>{});
    a = lower;
}
template <typename V>
inline void AlternatePair(V& a, V& b) {
    const V even = AlternateBlocks<false>(a, b, Indices<kCount<V>>{});
    b = AlternateBlocks<true>(a, b, Indices<kCount<V>>{});
    a = even;
}
template <typename V>
inline void Swap(V& a, V& b) {
    const V kept = a;
    a = b;
    b = kept;
}

/// Transposes x[0 .. kCount - 1] as a square matrix: number j of x[i] changes places with number i of x[j].
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
    if constexpr (kBlocks<V> != 1) {
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

/// Complex elements in the order of memory, kCount numbers in each of two vectors, to their real parts and their
/// imaginary parts, and back.
template <typename V, int... k>
inline void Separate(V a, V b, V& re, V& im, Indices<0, k...>) {
    re = __builtin_shufflevector(a, b, (2 * k)...);
    im = __builtin_shufflevector(a, b, (2 * k + 1)...);
}
template <typename V, int... k>
inline void Join(V re, V im, V& a, V& b, Indices<0, k...>) {
    constexpr int count = kCount<V>;
    a = __builtin_shufflevector(re, im, (k / 2 + k % 2 * count)...);
    b = __builtin_shufflevector(re, im, (count / 2 + k / 2 + k % 2 * count)...);
}

/// The same from and to memory at any address.
template <typename V>
inline void LoadSeparated(const void* address, V& re, V& im) {
    const auto* const at = static_cast<const unsigned char*>(address);
    Separate(Load<V>(at), Load<V>(at + sizeof(V)), re, im, Indices<kCount<V>>{});
}
template <typename V>
inline void StoreJoined(void* address, V re, V im) {
    V a;
    V b;
    Join(re, im, a, b, Indices<kCount<V>>{});
    auto* const at = static_cast<unsigned char*>(address);
    Store(at, a);
    Store(at + sizeof(V), b);
}

} // namespace simd::CLARIBOX_VECTOR_CLASS
