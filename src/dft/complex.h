// The element of every transform.
#pragma once

namespace dft {

/// An interleaved pair, real part first.
template <typename Real>
struct Complex {
    Real re;
    Real im;
};

} // namespace dft
