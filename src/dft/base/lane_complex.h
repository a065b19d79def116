// Complex arithmetic on one element (V = float or double) or on one element of several lines, a lane each (V = a
// vector). Every pass is a template of V, so a line gets the same bytes alone and in a batch. For vector sources only.
#pragma once

#include "dft/base/complex.h"
#include "simd/Vector.h"

#include <type_traits>

namespace dft::CLARIBOX_VECTOR_CLASS {

// Without SSE, rounding depends on how the compiler arranges x87 code: a batch is one line there, run by the same
// code.
#if defined(CLARIBOX_VECTOR_Portable)
using BatchSingle = float;
using BatchDouble = double;
#else
using BatchSingle = simd::CLARIBOX_VECTOR_CLASS::F32;
using BatchDouble = simd::CLARIBOX_VECTOR_CLASS::F64;
#endif

/// The element type of V.
template <typename V>
constexpr auto ElementOf(V x) {
    if constexpr (std::is_arithmetic_v<V>) {
        return x;
    } else {
        return x[0];
    }
}
template <typename V>
using Real = decltype(ElementOf(V{}));

template <typename V>
inline constexpr int kLines = static_cast<int>(sizeof(V) / sizeof(Real<V>));

/// Element k of all lines of a batch. An array of them is a batch in memory.
template <typename V>
using LaneComplex = Complex<V>;

template <typename V>
inline LaneComplex<V> operator+(LaneComplex<V> a, LaneComplex<V> b) {
    return {a.re + b.re, a.im + b.im};
}
template <typename V>
inline LaneComplex<V> operator-(LaneComplex<V> a, LaneComplex<V> b) {
    return {a.re - b.re, a.im - b.im};
}

template <typename V>
inline LaneComplex<V> operator*(LaneComplex<V> x, Real<V> factor) {
    return {x.re * factor, x.im * factor};
}
template <typename V>
inline void Swap(LaneComplex<V>& a, LaneComplex<V>& b) {
    const LaneComplex<V> x = a;
    a = b;
    b = x;
}

/// x * w forward, x * conj(w) backward.
template <Direction direction, typename V, typename W>
inline LaneComplex<V> Rotate(LaneComplex<V> x, W re, W im) {
    if constexpr (direction == kForward) {
        return {x.re * re - x.im * im, x.re * im + x.im * re};
    } else {
        return {x.re * re + x.im * im, x.im * re - x.re * im};
    }
}
template <Direction direction, typename V>
inline LaneComplex<V> Rotate(LaneComplex<V> x, Complex<Real<V>> w) {
    return Rotate<direction>(x, w.re, w.im);
}

/// x * -i forward, x * i backward.
template <Direction direction, typename V>
inline LaneComplex<V> QuarterTurn(LaneComplex<V> x) {
    if constexpr (direction == kForward) {
        return {x.im, -x.re};
    } else {
        return {-x.im, x.re};
    }
}

/// The 4-point transform, in natural order.
template <Direction direction, typename V>
inline void Butterfly4(LaneComplex<V>& x0, LaneComplex<V>& x1, LaneComplex<V>& x2, LaneComplex<V>& x3) {
    const LaneComplex<V> even = x0 + x2;
    const LaneComplex<V> odd = x1 + x3;
    const LaneComplex<V> evenRest = x0 - x2;
    const LaneComplex<V> oddRest = QuarterTurn<direction>(x1 - x3);
    x0 = even + odd;
    x1 = evenRest + oddRest;
    x2 = even - odd;
    x3 = evenRest - oddRest;
}

} // namespace dft::CLARIBOX_VECTOR_CLASS
