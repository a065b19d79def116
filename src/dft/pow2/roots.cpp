#include "dft/pow2/roots.h"

#include "dft/memory/plan_life.h"

#include <cmath>
#include <type_traits>

namespace dft {
namespace {

/// exp(-i * k * 2 pi / count).
template <typename Real>
Complex<Real> Root(int k, int count) {
    using Wide = std::conditional_t<std::is_same_v<Real, float>, double, long double>;
    constexpr Wide kCircle = static_cast<Wide>(6.283185307179586476925286766559L);
    const Wide angle = static_cast<Wide>(k) * (kCircle / static_cast<Wide>(count));
    return {static_cast<Real>(std::cos(angle)), static_cast<Real>(-std::sin(angle))};
}

} // namespace

template <typename Real>
void FillRoots(Complex<Real>* roots, int count) {
    const int computed = count % 4 == 0 ? count / 8 : count % 2 == 0 ? count / 4 : count / 2;
    for (int k = 0; k <= computed; ++k) {
        roots[k] = Root<Real>(k, count);
    }
    if (count % 4 == 0) {
        for (int k = computed + 1; k <= count / 4; ++k) {
            roots[k] = {-roots[count / 4 - k].im, -roots[count / 4 - k].re};
        }
    }
    if (count % 2 == 0) {
        for (int k = count / 4 + 1; k <= count / 2; ++k) {
            roots[k] = {-roots[count / 2 - k].re, roots[count / 2 - k].im};
        }
    }
    for (int k = count / 2 + 1; k < count; ++k) {
        roots[k] = {roots[count - k].re, -roots[count - k].im};
    }
}

template <typename Real>
Complex<Real>* AllocateCircle(int count) {
    Complex<Real>* const circle = AllocateTable<Complex<Real>>(count);
    if (circle != nullptr) {
        FillRoots(circle, count);
    }
    return circle;
}

template <typename Real>
Complex<Real>* AllocateTwoCircles(int length, Roots<Real> roots) {
    Complex<Real>* const table = AllocateTable<Complex<Real>>(2 * static_cast<std::int64_t>(length));
    for (int k = 0; table != nullptr && k < length; ++k) {
        table[k] = table[length + k] = roots.Of(length, k);
    }
    return table;
}

template void FillRoots(Complex<float>*, int);
template void FillRoots(Complex<double>*, int);
template Complex<float>* AllocateCircle(int);
template Complex<double>* AllocateCircle(int);
template Complex<float>* AllocateTwoCircles(int, Roots<float>);
template Complex<double>* AllocateTwoCircles(int, Roots<double>);

} // namespace dft
