// Butterflies and passes of radix 2 and 4, on elements that stand wherever a layout says (layouts.h). For vector
// sources only.
//
// Cooley and Tukey, "An algorithm for the machine calculation of complex Fourier series", 1965; Gentleman and Sande,
// "Fast Fourier transforms for fun and profit", 1966.
#pragma once

#include "dft/base/lane_complex.h"

#include <cstddef>
#include <type_traits>

namespace dft::CLARIBOX_VECTOR_CLASS {

template <typename V>
inline LaneComplex<V> Load(const LaneComplex<V>* from, std::ptrdiff_t k) {
    return from[k];
}
template <typename V>
inline void Store(LaneComplex<V>* to, std::ptrdiff_t k, LaneComplex<V> x) {
    to[k] = x;
}

/// Twiddles w, w^2, w^3 of one butterfly.
template <typename W>
struct TwiddleTriple {
    Complex<W> w1;
    Complex<W> w2;
    Complex<W> w3;
};

/// Which way passes go: from natural order to bit-reversed order, or back.
enum Order { kToBitReversed, kToNatural };

/// Decimation in time has the twiddles before the butterfly, decimation in frequency behind it.
enum Decimation { kInTime, kInFrequency };

/// x1, x2 and x3 times their twiddles.
template <Direction direction, typename V, typename W>
[[gnu::always_inline]] inline void RotateThree(LaneComplex<V>& x1, LaneComplex<V>& x2, LaneComplex<V>& x3,
                                               const TwiddleTriple<W>& w) {
    x1 = Rotate<direction>(x1, w.w1.re, w.w1.im);
    x2 = Rotate<direction>(x2, w.w2.re, w.w2.im);
    x3 = Rotate<direction>(x3, w.w3.re, w.w3.im);
}

/// The radix-4 butterfly on elements k, k + quarter, and so on; in bit-reversed order they are frequencies 0, 2, 1, 3.
/// Always inlined: a call would cost more than the butterfly.
template <Direction direction, Order order, Decimation decimation, typename In, typename Out, typename W>
[[gnu::always_inline]] inline void Radix4Butterfly(In in, Out out, std::ptrdiff_t k, std::ptrdiff_t quarter,
                                                   TwiddleTriple<W> w) {
    constexpr int from1 = order == kToNatural ? 2 : 1;
    constexpr int to1 = order == kToBitReversed ? 2 : 1;
    auto x0 = Load(in, k);
    auto x1 = Load(in, k + from1 * quarter);
    auto x2 = Load(in, k + (3 - from1) * quarter);
    auto x3 = Load(in, k + 3 * quarter);
    if constexpr (decimation == kInTime) {
        RotateThree<direction>(x1, x2, x3, w);
    }
    Butterfly4<direction>(x0, x1, x2, x3);
    if constexpr (decimation == kInFrequency) {
        RotateThree<direction>(x1, x2, x3, w);
    }
    Store(out, k, x0);
    Store(out, k + to1 * quarter, x1);
    Store(out, k + (3 - to1) * quarter, x2);
    Store(out, k + 3 * quarter, x3);
}

/// Radix-4 butterflies among elements `quarter` apart, in `blocks` adjacent blocks. `twiddle(j)` gives the triple of
/// element j of a quarter. `in` and `out` are the same or do not overlap.
template <Direction direction, Order order, Decimation decimation, typename In, typename Out, typename Twiddle>
inline void Pass4(In in, Out out, std::ptrdiff_t quarter, std::ptrdiff_t blocks, Twiddle twiddle) {
    const std::ptrdiff_t end = 4 * quarter * blocks;
    if constexpr (std::is_arithmetic_v<decltype(twiddle(0).w1.re)>) {
        // Block by block: otherwise loads and stores are often a multiple of 4096 bytes apart, an address conflict.
        for (std::ptrdiff_t first = 0; first < end; first += 4 * quarter) {
            for (std::ptrdiff_t j = 0; j < quarter; ++j) {
                Radix4Butterfly<direction, order, decimation>(in, out, first + j, quarter, twiddle(j));
            }
        }
    } else {
        // Vectors of twiddles are put together from groups of four, once for all blocks.
        for (std::ptrdiff_t j = 0; j < quarter; ++j) {
            const auto w = twiddle(j);
            for (std::ptrdiff_t first = 0; first < end; first += 4 * quarter) {
                Radix4Butterfly<direction, order, decimation>(in, out, first + j, quarter, w);
            }
        }
    }
}

/// Twiddles of one radix-2 pass, or of two such passes in a row, on four elements a quarter of a block apart.
template <typename W>
struct LevelTwiddles {
    Complex<W> first;  ///< of elements 0 and 2
    Complex<W> second; ///< of elements 1 and 3
    Complex<W> lower;  ///< in the pass on halves, of elements 0 and 1
    Complex<W> upper;  ///< and of elements 2 and 3
};

template <Direction direction, Decimation decimation, typename V, typename W>
[[gnu::always_inline]] inline void Butterfly2(LaneComplex<V>& x0, LaneComplex<V>& x1, Complex<W> w) {
    const LaneComplex<V> turned = decimation == kInTime ? Rotate<direction>(x1, w.re, w.im) : x1;
    const LaneComplex<V> difference = x0 - turned;
    x0 = x0 + turned;
    x1 = decimation == kInFrequency ? Rotate<direction>(difference, w.re, w.im) : difference;
}

/// One radix-2 pass, or two at once, on positions first .. end - 1 of the quarters of a block of 4 * quarter vectors.
/// The order of elements stays. Two passes run from whole to halves forward, the other way backward.
template <int levels, Direction direction, Decimation decimation, typename In, typename Out, typename Twiddle>
inline void Pass2(In in, Out out, std::ptrdiff_t quarter, std::ptrdiff_t first, std::ptrdiff_t end, Twiddle twiddle) {
    for (std::ptrdiff_t j = first; j < end; ++j) {
        const auto w = twiddle(j);
        auto x0 = Load(in, j);
        auto x1 = Load(in, j + quarter);
        auto x2 = Load(in, j + 2 * quarter);
        auto x3 = Load(in, j + 3 * quarter);
        if constexpr (levels == 2 && direction == kBackward) {
            Butterfly2<direction, decimation>(x0, x1, w.lower);
            Butterfly2<direction, decimation>(x2, x3, w.upper);
        }
        Butterfly2<direction, decimation>(x0, x2, w.first);
        Butterfly2<direction, decimation>(x1, x3, w.second);
        if constexpr (levels == 2 && direction == kForward) {
            Butterfly2<direction, decimation>(x0, x1, w.lower);
            Butterfly2<direction, decimation>(x2, x3, w.upper);
        }
        Store(out, j, x0);
        Store(out, j + quarter, x1);
        Store(out, j + 2 * quarter, x2);
        Store(out, j + 3 * quarter, x3);
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
    decltype(load(0)) x[] = {load(0), load(1), load(2), load(3)};
    Butterfly4<direction>(x[0], x[1], x[2], x[3]);
    simd::CLARIBOX_VECTOR_CLASS::Unrolled<4>([&](int k) { store(k, x[k]); });
}
template <Direction direction, typename V, typename Load, typename Store>
inline void Transform8(Load load, Store store) {
    constexpr auto kHalfRoot = Real<V>(kCosEighth);
    LaneComplex<V> even[] = {load(0), load(2), load(4), load(6)};
    LaneComplex<V> odd[] = {load(1), load(3), load(5), load(7)};
    Butterfly4<direction>(even[0], even[1], even[2], even[3]);
    Butterfly4<direction>(odd[0], odd[1], odd[2], odd[3]);
    const LaneComplex<V> turned1 = QuarterTurn<direction>(odd[1]);
    const LaneComplex<V> turned3 = QuarterTurn<direction>(odd[3]);
    odd[1] = (odd[1] + turned1) * kHalfRoot;
    odd[2] = QuarterTurn<direction>(odd[2]);
    odd[3] = (turned3 - odd[3]) * kHalfRoot;
    simd::CLARIBOX_VECTOR_CLASS::Unrolled<4>([&](int k) {
        store(k, even[k] + odd[k]);
        store(k + 4, even[k] - odd[k]);
    });
}

} // namespace dft::CLARIBOX_VECTOR_CLASS
