#include "dft/pow2/static_tables.h"

#include "dft/pow2/roots.h"

namespace dft {
namespace {

constexpr int kPoints = 1 << kStaticBits;

/// The level of N points, with the twiddles W^j .. W^(powers * j); returns its end.
template <typename Real>
Real* FillLevel(Real* group, int n, int powers, const Complex<Real>* circle) {
    for (int j = 0; j < n / 4; j += 4) {
        for (int power = 1; power <= powers; ++power) {
            for (int k = 0; k < 4; ++k) {
                const Complex<Real>& root = circle[power * (j + k) * (kPoints / n)];
                group[k] = root.re;
                group[k + 4] = root.im;
            }
            group += 8;
        }
    }
    return group;
}

template <typename Real>
StaticTables<Real> Fill() {
    static Complex<Real> circle[kPoints];
    FillRoots(circle, kPoints);
    StaticTables<Real> tables;
    Real* end = tables.even;
    for (int n = kPoints; n >= 16; n /= 4) {
        end = FillLevel(end, n, 3, circle);
    }
    end = tables.odd;
    for (int n = kPoints / 2; n >= 32; n /= 4) {
        end = FillLevel(end, n, 1, circle);
    }
    return tables;
}

} // namespace

template <typename Real>
const StaticTables<Real>& static_tables() {
    static const StaticTables<Real> tables = Fill<Real>();
    return tables;
}

template const StaticTables<float>& static_tables();
template const StaticTables<double>& static_tables();

} // namespace dft
