// The roots of unity that all twiddles come from: a whole circle at once, or one after the other.
#pragma once

#include "dft/base/complex.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace dft {

/// Fills roots[k] = exp(-2 pi i k / count) for k below `count`, at least 1, computed one precision wider than stored.
/// At most half of the circle is computed, the rest mirrored, so that mirrored roots have the same digits.
template <typename Real>
void FillRoots(Complex<Real>* roots, int count);

/// The same in plan memory, which `plan_free` takes back; null if there is none.
template <typename Real>
Complex<Real>* AllocateCircle(int count);

/// A circle of roots: circle[k] = exp(-2 pi i k / count) for k below `count`.
template <typename Real>
struct Roots {
    const Complex<Real>* circle;
    int count;

    /// exp(-2 pi i k / n), where n divides `count` and k is below n.
    Complex<Real> Of(int n, int k) const { return circle[static_cast<std::ptrdiff_t>(k) * (count / n)]; }
};

/// 2 * length roots, twice around the circle, so that indices need no reduction, in plan memory; null if there is
/// none. `length` divides the count of `roots`.
template <typename Real>
Complex<Real>* AllocateTwoCircles(int length, Roots<Real> roots);

/// exp(-i * j * 2 pi / points) for j = 0, 1, 2 .. in turn, for commit tables. Given: single precision sums the angles
/// in extended precision (ChecksumTest). The sums drift by up to 2^-64 radians a step, too much for double precision:
/// there each angle is a product (DftTransform.AwkwardLengths).
template <typename Real>
class RootSeries {
public:
    explicit RootSeries(std::int64_t points) : m_Step(8.0L * std::atan(1.0L) / static_cast<long double>(points)) {}
    Complex<Real> Next() {
        const Complex<Real> root = {static_cast<Real>(std::cos(m_Angle)), static_cast<Real>(-std::sin(m_Angle))};
        ++m_Index;
        m_Angle = kPrecision<Real> == 0 ? m_Angle + m_Step : m_Step * static_cast<long double>(m_Index);
        return root;
    }

private:
    long double m_Step;
    long double m_Angle = 0.0L;
    std::int64_t m_Index = 0;
};

} // namespace dft
