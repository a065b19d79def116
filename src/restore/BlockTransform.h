// The orthonormal cosine transform of single blocks, as measurements need it.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>

namespace restore {

/// n * n samples or coefficients, row by row.
template <std::size_t n>
using Block = std::array<float, n * n>;

/// Element k * n + i: what sample i contributes to coefficient k.
template <std::size_t n>
const Block<n>& CosineBasis() {
    static const Block<n> basis = [] {
        Block<n> made{};
        for (std::size_t k = 0; k < n; ++k) {
            for (std::size_t i = 0; i < n; ++i) {
                const double norm = std::sqrt((k == 0 ? 1.0 : 2.0) / static_cast<double>(n));
                const double angle = 3.14159265358979323846 * static_cast<double>(k * (2 * i + 1)) / (2.0 * n);
                made[k * n + i] = static_cast<float>(norm * std::cos(angle));
            }
        }
        return made;
    }();
    return basis;
}

/// Element v * n + u of the result has the frequency u along rows.
template <std::size_t n>
Block<n> TransformBlock(const Block<n>& samples) {
    const Block<n>& basis = CosineBasis<n>();
    Block<n> half{};
    for (std::size_t r = 0; r < n; ++r) {
        for (std::size_t u = 0; u < n; ++u) {
            for (std::size_t i = 0; i < n; ++i) {
                half[r * n + u] += basis[u * n + i] * samples[r * n + i];
            }
        }
    }
    Block<n> result{};
    for (std::size_t v = 0; v < n; ++v) {
        for (std::size_t i = 0; i < n; ++i) {
            for (std::size_t u = 0; u < n; ++u) {
                result[v * n + u] += basis[v * n + i] * half[i * n + u];
            }
        }
    }
    return result;
}

} // namespace restore
