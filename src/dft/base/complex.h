// The element of every transform, the two directions, and the index of a precision.
#pragma once

#include <type_traits>

namespace dft {

/// An interleaved pair, real part first.
template <typename Real>
struct Complex {
    Real re;
    Real im;
};

/// cos(2 pi / 8).
inline constexpr long double kCosEighth = 0.707106781186547524400844362104849039L;

/// Direction of a transform, and index of the kernels below.
enum Direction { kForward = 0, kBackward = 1 };

/// Index of a precision: 0 single, 1 double.
template <typename Real>
inline constexpr int kPrecision = std::is_same_v<Real, float> ? 0 : 1;

} // namespace dft
