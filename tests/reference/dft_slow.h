// Discrete Fourier transforms from the definition, in long double: a plain sum where that is quick enough, else
// decimation in time by the smallest prime factor. Slow and obviously correct; the library's own code includes nothing
// of it.
#pragma once

#include "dft/base/complex.h"

#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

namespace dft_slow {

using Wide = std::complex<long double>;
using WideLine = std::vector<Wide>;

/// Lengths up to this one are summed as the definition stands, others only where they are prime.
inline constexpr std::size_t kPlainSumUpTo = 600;
/// The same for the parts of a longer length.
inline constexpr std::size_t kPartSumUpTo = 16;

template <typename T>
Wide ToWide(const std::complex<T>& x) {
    return {static_cast<long double>(x.real()), static_cast<long double>(x.imag())};
}
template <typename T>
Wide ToWide(const dft::Complex<T>& x) {
    return {static_cast<long double>(x.re), static_cast<long double>(x.im)};
}

/// a * b without the special cases of infinities, which cost most of the time.
inline Wide Product(const Wide& a, const Wide& b) {
    return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

inline std::size_t SmallestPrimeFactor(std::size_t n) {
    for (std::size_t d = 2; d * d <= n; ++d) {
        if (n % d == 0) {
            return d;
        }
    }
    return n;
}

/// Transforms of one length and one sign of the exponent: -1 forward, +1 backward.
class Transformer {
public:
    Transformer(std::size_t length, int sign) : m_Roots(length) {
        for (std::size_t k = 0; k < length; ++k) {
            const long double angle =
                2.0L * std::numbers::pi_v<long double> * static_cast<long double>(k) / static_cast<long double>(length);
            m_Roots[k] = {std::cos(angle), static_cast<long double>(sign) * std::sin(angle)};
        }
    }

    /// X[j] = sum over k of x[k] * root^(j * k).
    WideLine operator()(const WideLine& x, std::size_t plainSumUpTo = kPlainSumUpTo) const {
        const std::size_t n = m_Roots.size();
        WideLine result(n);
        if (n > 0 && n <= plainSumUpTo) {
            Sum(x.data(), 1, n, 1, result.data());
        } else if (n > 0) {
            Split(x.data(), 1, n, result.data());
        }
        return result;
    }

private:
    // Transforms the n elements that stand `step` apart; n * step is the whole length.
    void Split(const Wide* x, std::size_t step, std::size_t n, Wide* result) const {
        const std::size_t p = SmallestPrimeFactor(n);
        if (p == n || n <= kPartSumUpTo) {
            Sum(x, step, n, step, result);
            return;
        }
        const std::size_t m = n / p;
        for (std::size_t r = 0; r < p; ++r) {
            Split(x + r * step, step * p, m, result + r * m);
        }
        WideLine turned(p);
        WideLine outputs(p);
        for (std::size_t j = 0; j < m; ++j) {
            for (std::size_t r = 0; r < p; ++r) {
                turned[r] = Product(result[r * m + j], m_Roots[r * j * step]);
            }
            Sum(turned.data(), 1, p, step * m, outputs.data());
            for (std::size_t q = 0; q < p; ++q) {
                result[q * m + j] = outputs[q];
            }
        }
    }

    // The definition, on n elements that stand `step` apart, with every `rootStep`-th root. Most of the tests' time
    // goes by in here, on data that no other thread writes: the sanitizers are told to leave it alone, and it calls
    // nothing, since a function with their checks would not be inlined.
    __attribute__((no_sanitize("thread", "address", "undefined"))) void
    Sum(const Wide* x, std::size_t step, std::size_t n, std::size_t rootStep, Wide* result) const {
        // Complex numbers are arrays of two by the standard's word.
        const auto* const in = reinterpret_cast<const long double(*)[2]>(x);
        const auto* const roots = reinterpret_cast<const long double(*)[2]>(m_Roots.data());
        auto* const out = reinterpret_cast<long double(*)[2]>(result);
        const std::size_t circle = n * rootStep;
        for (std::size_t j = 0; j < n; ++j) {
            long double re = 0.0L;
            long double im = 0.0L;
            for (std::size_t k = 0, at = 0; k < n; ++k) {
                const long double* const element = in[k * step];
                const long double* const root = roots[at];
                re += element[0] * root[0] - element[1] * root[1];
                im += element[0] * root[1] + element[1] * root[0];
                at += j * rootStep;
                at -= at >= circle ? circle : 0;
            }
            out[j][0] = re;
            out[j][1] = im;
        }
    }

    WideLine m_Roots; // root^k
};

template <typename Element>
WideLine ToWideLine(const std::vector<Element>& x) {
    WideLine wide;
    wide.reserve(x.size());
    for (const Element& element : x) {
        wide.push_back(ToWide(element));
    }
    return wide;
}

/// One-dimensional transform, unscaled; `sign` of the exponent: -1 forward, +1 backward. `Element` is std::complex<T>
/// or dft::Complex<T>, here and below.
template <typename Element>
WideLine Transform(const std::vector<Element>& x, int sign) {
    return Transformer(x.size(), sign)(ToWideLine(x));
}

/// Transform along every dimension of an array with the given lengths, slowest-varying first.
template <typename Element>
WideLine TransformNd(const std::vector<Element>& x, const std::vector<int>& lengths, int sign) {
    WideLine data = ToWideLine(x);
    std::size_t stride = data.size();
    for (const int length : lengths) {
        const auto n = static_cast<std::size_t>(length);
        const Transformer transformer(n, sign);
        stride /= n;
        WideLine line(n);
        for (std::size_t start = 0; start < data.size(); ++start) {
            if (start / stride % n != 0) {
                continue;
            }
            for (std::size_t k = 0; k < n; ++k) {
                line[k] = data[start + k * stride];
            }
            const WideLine transformed = transformer(line);
            for (std::size_t k = 0; k < n; ++k) {
                data[start + k * stride] = transformed[k];
            }
        }
    }
    return data;
}

/// L2 norm of the difference over the L2 norm of `wide`; the norm of `computed` itself where `wide` is all zeros.
template <typename Element>
double RelativeError(const std::vector<Element>& computed, const WideLine& wide) {
    long double difference = 0.0L;
    long double norm = 0.0L;
    for (std::size_t k = 0; k < wide.size(); ++k) {
        difference += std::norm(ToWide(computed[k]) - wide[k]);
        norm += std::norm(wide[k]);
    }
    return static_cast<double>(std::sqrt(norm > 0.0L ? difference / norm : difference));
}

/// n elements with parts in [-1, 1), all multiples of 2^-23, so that single and double precision hold the same values.
template <typename Element>
std::vector<Element> RandomLine(std::size_t n, std::uint32_t seed) {
    std::mt19937 generator(seed);
    const auto part = [&generator] { return static_cast<float>(generator() >> 8) / 8388608.0f - 1.0f; };
    std::vector<Element> line(n);
    for (Element& element : line) {
        const float re = part();
        element = {re, part()};
    }
    return line;
}

} // namespace dft_slow
