// Short transforms of odd length: 3, 5 and any other; 2, 4 and 8 are in pow2/passes.h. For vector sources only.
//
// Each reads all inputs through load(k) before its first store(j), so that both may name the same places.
#pragma once

#include "dft/base/lane_complex.h"

namespace dft::CLARIBOX_VECTOR_CLASS {

/// The three-point transform of Winograd ("On computing the discrete Fourier transform", 1978).
template <Direction direction, typename V, typename Load, typename Store>
inline void Dft3(Load load, Store store) {
    constexpr Real<V> kCosine = Real<V>(-0.5L);
    constexpr Real<V> kSine = Real<V>(-0.866025403784438646763723170752936183L);
    const LaneComplex<V> x0 = load(0);
    const LaneComplex<V> x1 = load(1);
    const LaneComplex<V> x2 = load(2);
    const LaneComplex<V> sum = x1 + x2;
    const LaneComplex<V> turned = QuarterTurn<direction>(x1 - x2);
    const LaneComplex<V> middle{x0.re + sum.re * kCosine, x0.im + sum.im * kCosine};
    const LaneComplex<V> rest{turned.re * kSine, turned.im * kSine};
    store(0, x0 + sum);
    store(1, middle - rest);
    store(2, middle + rest);
}

template <Direction direction, typename V, typename Load, typename Store>
inline void Dft5(Load load, Store store) {
    constexpr Real<V> kCosine1 = Real<V>(0.309016994374947424102293417182819059L);
    constexpr Real<V> kCosine2 = Real<V>(-0.809016994374947424102293417182819059L);
    constexpr Real<V> kSine1 = Real<V>(0.951056516295153572116439333379382143L);
    constexpr Real<V> kSine2 = Real<V>(0.587785252292473129168705954639072769L);
    const LaneComplex<V> x0 = load(0);
    const LaneComplex<V> x1 = load(1);
    const LaneComplex<V> x2 = load(2);
    const LaneComplex<V> x3 = load(3);
    const LaneComplex<V> x4 = load(4);
    const LaneComplex<V> outer = x1 + x4;
    const LaneComplex<V> inner = x2 + x3;
    const LaneComplex<V> outerTurned = QuarterTurn<direction>(x1 - x4);
    const LaneComplex<V> innerTurned = QuarterTurn<direction>(x2 - x3);
    const LaneComplex<V> even1{x0.re + outer.re * kCosine1 + inner.re * kCosine2,
                               x0.im + outer.im * kCosine1 + inner.im * kCosine2};
    const LaneComplex<V> even2{x0.re + outer.re * kCosine2 + inner.re * kCosine1,
                               x0.im + outer.im * kCosine2 + inner.im * kCosine1};
    const LaneComplex<V> odd1{outerTurned.re * kSine1 + innerTurned.re * kSine2,
                              outerTurned.im * kSine1 + innerTurned.im * kSine2};
    const LaneComplex<V> odd2{outerTurned.re * kSine2 - innerTurned.re * kSine1,
                              outerTurned.im * kSine2 - innerTurned.im * kSine1};
    store(0, x0 + outer + inner);
    store(1, even1 + odd1);
    store(2, even2 + odd2);
    store(3, even2 - odd2);
    store(4, even1 - odd1);
}

/// As many pairs of outputs as the registers hold.
#if defined(CLARIBOX_VECTOR_AVX512)
inline constexpr int kMirroredPairs = 4;
#else
inline constexpr int kMirroredPairs = 2;
#endif

/// Outputs j .. j + width - 1 of a transform of odd `length`, and their mirror images at length - j.
template <Direction direction, int width, typename V, typename Store>
inline void DftOddOutputs(int length, const Complex<Real<V>>* matrix, LaneComplex<V> first, const LaneComplex<V>* pairs,
                          int j, Store store) {
    using simd::CLARIBOX_VECTOR_CLASS::Unrolled;
    LaneComplex<V> cosines[width]; // sums times cosines
    LaneComplex<V> sines[width];   // differences times sines, a quarter turn short
    int angle[width];
    Unrolled<width>([&](int w) {
        cosines[w] = first;
        sines[w] = LaneComplex<V>{};
        angle[w] = 0;
    });
    for (int k = 0; k < length / 2; ++k) {
        const LaneComplex<V> sum = pairs[2 * k];
        const LaneComplex<V> difference = pairs[2 * k + 1];
        Unrolled<width>([&](int w) {
            angle[w] += j + w;
            angle[w] -= angle[w] >= length ? length : 0;
            const Complex<Real<V>> root = matrix[angle[w]];
            cosines[w].re = cosines[w].re + sum.re * root.re;
            cosines[w].im = cosines[w].im + sum.im * root.re;
            sines[w].re = sines[w].re + difference.re * root.im;
            sines[w].im = sines[w].im + difference.im * root.im;
        });
    }
    Unrolled<width>([&](int w) {
        // The roots' imaginary parts are those of the forward transform.
        const LaneComplex<V> turned{-sines[w].im, sines[w].re};
        const int mirrored = length - j - w;
        store(direction == kForward ? j + w : mirrored, cosines[w] + turned);
        store(direction == kForward ? mirrored : j + w, cosines[w] - turned);
    });
}

/// The definition for an odd `length` from 3, on sums and differences of mirrored inputs, which halves the products.
/// `matrix` is AllocateTwoCircles (pow2/roots.h); `pairs` has room for length - 1 elements.
template <Direction direction, typename V, typename Load, typename Store>
inline void DftOdd(int length, const Complex<Real<V>>* matrix, LaneComplex<V>* pairs, Load load, Store store) {
    const LaneComplex<V> first = load(0);
    LaneComplex<V> total = first;
    const int half = length / 2;
    for (int k = 1; k <= half; ++k) {
        const LaneComplex<V> x = load(k);
        const LaneComplex<V> mirrored = load(length - k);
        pairs[2 * k - 2] = x + mirrored;
        pairs[2 * k - 1] = x - mirrored;
        total = total + pairs[2 * k - 2];
    }
    store(0, total);
    int j = 1;
    for (; half - j >= kMirroredPairs; j += kMirroredPairs) {
        DftOddOutputs<direction, kMirroredPairs>(length, matrix, first, pairs, j, store);
    }
    if constexpr (kMirroredPairs == 4) {
        if (half - j == 3) {
            return DftOddOutputs<direction, 4>(length, matrix, first, pairs, j, store);
        }
        if (half - j == 2) {
            return DftOddOutputs<direction, 3>(length, matrix, first, pairs, j, store);
        }
    }
    if (half - j == 1) {
        return DftOddOutputs<direction, 2>(length, matrix, first, pairs, j, store);
    }
    DftOddOutputs<direction, 1>(length, matrix, first, pairs, j, store);
}

} // namespace dft::CLARIBOX_VECTOR_CLASS
