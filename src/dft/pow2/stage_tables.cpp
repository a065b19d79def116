#include "dft/pow2/stage_tables.h"

#include "dft/pow2/roots.h"

namespace dft {
namespace {

template <typename Real>
StaticTables<Real> Fill() {
    constexpr int kPoints = 1 << kStaticBits;
    static Complex<Real> circle[kPoints];
    FillRoots(circle, kPoints);
    const auto fill = [](Real* at, int longest, int shortest, int powers) {
        for (int n = longest; n >= shortest; n /= 4) {
            at = WriteStage(at, n / 4, powers, [=](std::int64_t k) { return circle[k * (kPoints / n)]; });
        }
    };
    StaticTables<Real> tables;
    fill(tables.even, kPoints, 16, 3);
    fill(tables.odd, kPoints / 2, 32, 1);
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
