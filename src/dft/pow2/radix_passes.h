// Passes of radix 2 and 4 over blocks of elements, decimated in time or in frequency, and the twiddles that they read.
// For vector sources only.
//
// A block of 4 * quarter elements is four transforms of `quarter` elements in a row. Order of the four, here and
// wherever spectra are "bit-reversed": by the two lowest bits of the frequency, reversed, so 0, 2, 1, 3. Cooley and
// Tukey, "An algorithm for the machine calculation of complex Fourier series", 1965; Gentleman and Sande, "Fast Fourier
// transforms for fun and profit", 1966.
#pragma once

#include "dft/base/lane_complex.h"

#include <cstddef>
#include <type_traits>

namespace dft::CLARIBOX_VECTOR_CLASS {

template <typename V>
inline LaneComplex<V> Fetch(const LaneComplex<V>* from, std::ptrdiff_t k) {
    return from[k];
}
template <typename V>
inline void Deposit(LaneComplex<V>* to, std::ptrdiff_t k, LaneComplex<V> x) {
    to[k] = x;
}

template <typename V>
inline LaneComplex<V> operator*(LaneComplex<V> x, Real<V> factor) {
    return {x.re * factor, x.im * factor};
}

/// Twiddles w, w^2, w^3 of one butterfly.
template <typename W>
struct TwiddleTriple {
    Complex<W> w1;
    Complex<W> w2;
    Complex<W> w3;
};

/// Which way a pass goes: from elements in natural order to transforms in bit-reversed order, or back.
enum Order { kScramble, kUnscramble };

/// Whether twiddles come before the butterfly or after it.
enum Rotation { kBefore, kAfter };

/// A butterfly of four on elements k, k + quarter, and so on. Always inlined: a call would cost more than it does.
template <Direction direction, Order order, Rotation rotation, typename In, typename Out, typename W>
[[gnu::always_inline]] inline void TurnFour(In in, Out out, std::ptrdiff_t k, std::ptrdiff_t quarter,
                                            TwiddleTriple<W> w) {
    constexpr int from1 = order == kUnscramble ? 2 : 1;
    constexpr int to1 = order == kScramble ? 2 : 1;
    auto x0 = Fetch(in, k);
    auto x1 = Fetch(in, k + from1 * quarter);
    auto x2 = Fetch(in, k + (3 - from1) * quarter);
    auto x3 = Fetch(in, k + 3 * quarter);
    if constexpr (rotation == kBefore) {
        x1 = Rotate<direction>(x1, w.w1.re, w.w1.im);
        x2 = Rotate<direction>(x2, w.w2.re, w.w2.im);
        x3 = Rotate<direction>(x3, w.w3.re, w.w3.im);
    }
    Butterfly4<direction>(x0, x1, x2, x3);
    if constexpr (rotation == kAfter) {
        x1 = Rotate<direction>(x1, w.w1.re, w.w1.im);
        x2 = Rotate<direction>(x2, w.w2.re, w.w2.im);
        x3 = Rotate<direction>(x3, w.w3.re, w.w3.im);
    }
    Deposit(out, k, x0);
    Deposit(out, k + to1 * quarter, x1);
    Deposit(out, k + (3 - to1) * quarter, x2);
    Deposit(out, k + 3 * quarter, x3);
}

/// Butterflies of four among elements `quarter` apart, in `blocks` adjacent blocks. `twiddle(j)` gives the triple of
/// element j of a quarter. `in` and `out` are the same or do not overlap.
template <Direction direction, Order order, Rotation rotation, typename In, typename Out, typename Twiddle>
inline void Pass4(In in, Out out, std::ptrdiff_t quarter, std::ptrdiff_t blocks, Twiddle twiddle) {
    const std::ptrdiff_t end = 4 * quarter * blocks;
    if constexpr (std::is_arithmetic_v<decltype(twiddle(0).w1.re)>) {
        // Taken from block to block, loads and stores would often be a multiple of 4096 bytes apart, which the
        // processor takes for the same address.
        for (std::ptrdiff_t first = 0; first < end; first += 4 * quarter) {
            for (std::ptrdiff_t j = 0; j < quarter; ++j) {
                TurnFour<direction, order, rotation>(in, out, first + j, quarter, twiddle(j));
            }
        }
    } else {
        // Vectors of twiddles are put together from groups of four, once for all blocks.
        for (std::ptrdiff_t j = 0; j < quarter; ++j) {
            const auto w = twiddle(j);
            for (std::ptrdiff_t first = 0; first < end; first += 4 * quarter) {
                TurnFour<direction, order, rotation>(in, out, first + j, quarter, w);
            }
        }
    }
}

/// Transforms of 2, 4 and 8 elements, all in natural order; load(k) and store(j, x) say where they are. All loads come
/// before the first store.
template <Direction direction, typename Load, typename Store>
inline void Transform2(Load load, Store store) {
    const auto x0 = load(0);
    const auto x1 = load(1);
    store(0, x0 + x1);
    store(1, x0 - x1);
}
template <Direction direction, typename Load, typename Store>
inline void Transform4(Load load, Store store) {
    auto x0 = load(0);
    auto x1 = load(1);
    auto x2 = load(2);
    auto x3 = load(3);
    Butterfly4<direction>(x0, x1, x2, x3);
    store(0, x0);
    store(1, x1);
    store(2, x2);
    store(3, x3);
}
template <Direction direction, typename V, typename Load, typename Store>
inline void Transform8(Load load, Store store) {
    constexpr auto kHalfRoot = Real<V>(kCosEighth);
    LaneComplex<V> even0 = load(0);
    LaneComplex<V> even1 = load(2);
    LaneComplex<V> even2 = load(4);
    LaneComplex<V> even3 = load(6);
    LaneComplex<V> odd0 = load(1);
    LaneComplex<V> odd1 = load(3);
    LaneComplex<V> odd2 = load(5);
    LaneComplex<V> odd3 = load(7);
    Butterfly4<direction>(even0, even1, even2, even3);
    Butterfly4<direction>(odd0, odd1, odd2, odd3);
    const LaneComplex<V> turned1 = QuarterTurn<direction>(odd1);
    const LaneComplex<V> turned3 = QuarterTurn<direction>(odd3);
    odd1 = (odd1 + turned1) * kHalfRoot;
    odd2 = QuarterTurn<direction>(odd2);
    odd3 = (turned3 - odd3) * kHalfRoot;
    store(0, even0 + odd0);
    store(1, even1 + odd1);
    store(2, even2 + odd2);
    store(3, even3 + odd3);
    store(4, even0 - odd0);
    store(5, even1 - odd1);
    store(6, even2 - odd2);
    store(7, even3 - odd3);
}

} // namespace dft::CLARIBOX_VECTOR_CLASS
