// The element of every transform, and a root of unity that many share.
#pragma once

namespace dft {

/// An interleaved pair, real part first.
template <typename Real>
struct Complex {
    Real re;
    Real im;
};

/// cos(2 pi / 8).
inline constexpr long double kCosEighth = 0.707106781186547524400844362104849039L;

} // namespace dft
