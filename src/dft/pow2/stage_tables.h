// Twiddles by stage: the constant tables that all transforms up to 4096 points share, and the way in which they, the
// plans of powers of two and the commit tables write a stage.
#pragma once

#include "dft/base/complex.h"

#include <cstdint>

namespace dft {

/// Writes the twiddles W^j .. W^(powers * j) of `count` consecutive j, a multiple of 4, in groups of four: four real
/// parts of W^j, four imaginary ones, the same for W^2j, and so on. root(power * j) is W^(power * j). Returns the end.
template <typename Real, typename Root>
Real* WriteStage(Real* group, std::int64_t count, int powers, Root root) {
    for (std::int64_t j = 0; j < count; j += 4) {
        for (int power = 1; power <= powers; ++power, group += 8) {
            for (int k = 0; k < 4; ++k) {
                const Complex<Real> w = root(power * (j + k));
                group[k] = w.re;
                group[k + 4] = w.im;
            }
        }
    }
    return group;
}

inline constexpr int kStaticBits = 12; ///< given: log2 of the longest stage

template <typename Real>
struct StaticTables {
    /// The stages of N = 4096, 1024, 256, 64, 16 points, one after the other: j below N / 4, three powers. That of N
    /// starts at number 2 * (4096 - N).
    Real even[8184];
    /// N = 2048, 512, 128, 32: j below N / 4, one power, the first half of the twiddles of a radix-2 stage. That of N
    /// starts at number (4096 - 2 * N) / 3.
    Real odd[1360];
};

/// Computed at the first call.
template <typename Real>
const StaticTables<Real>& static_tables();

} // namespace dft
