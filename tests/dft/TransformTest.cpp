// What complex transforms compute, held to the definition in wider precision.
#include "dft/dft.h"

#include "dft/TestJob.h"
#include "dft/TestSurroundings.h"
#include "reference/dft_slow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

namespace {

using dft_slow::WideLine;

std::size_t LargestPrimeFactor(std::size_t n) {
    const std::size_t p = dft_slow::SmallestPrimeFactor(n);
    return p == n ? n : LargestPrimeFactor(n / p);
}

// Of the relative error in the L2 norm. Roundings are as good as independent, so that the error grows as the root of
// the number of levels. On all lengths below the factor comes to 0.39 at most; to 0.61 where a long direct sum or the
// three transforms of the Bluestein method stand for a level. A table with an error of one unit in the last place, or
// twiddles by repeated multiplication, are far beyond.
template <typename Real>
double Bound(std::size_t n) {
    const double factor = LargestPrimeFactor(n) > 50 ? 0.7 : 0.45;
    return factor * std::numeric_limits<Real>::epsilon() * std::sqrt(1.0 + std::log2(static_cast<double>(n)));
}

/// The same in both precisions.
template <typename Real>
auto RandomLine(std::size_t n) {
    return dft_slow::RandomLine<dft::Complex<Real>>(n, static_cast<std::uint32_t>(n));
}

/// Element k stands where its index with the bits reversed says.
template <typename Element>
std::vector<Element> InBitReversedOrder(const std::vector<Element>& line) {
    std::vector<Element> reversed(line.size());
    for (std::size_t k = 0; k < line.size(); ++k) {
        std::size_t place = 0;
        for (std::size_t bit = 1; bit < line.size(); bit *= 2) {
            place = 2 * place + ((k & bit) != 0 ? 1 : 0);
        }
        reversed[place] = line[k];
    }
    return reversed;
}

/// All placements, directions and orders.
template <typename Real>
void CheckLine(std::size_t n, const WideLine& forward) {
    const auto x = RandomLine<Real>(n);
    WideLine backward = forward;
    std::reverse(backward.begin() + 1, backward.end());
    for (const std::int32_t placement : kPlacements) {
        const TestJob<Real> job({static_cast<int>(n)}, placement);
        for (const std::int32_t ordering : kOrderings) {
            job->ordering = ordering;
            const bool isReversed = job->general_length == 0 && ordering != dft::DFT_ORDERED;
            for (const int sign : kSigns) {
                const auto result = job.Run(sign, isReversed && sign > 0 ? InBitReversedOrder(x) : x);
                const WideLine& expected = sign < 0 ? forward : backward;
                EXPECT_LE(
                    dft_slow::RelativeError(result, isReversed && sign < 0 ? InBitReversedOrder(expected) : expected),
                    Bound<Real>(n))
                    << "length " << n << ", placement " << placement << ", sign " << sign << ", ordering " << ordering
                    << ", element bytes " << sizeof(x[0]);
            }
        }
    }
}

/// In every variant where they differ.
void CheckLine(std::size_t n) {
    const WideLine forward = dft_slow::Transform(RandomLine<float>(n), -1);
    for (int variant = 0; variant < (std::has_single_bit(n) && n <= 65536 ? 3 : 1); ++variant) {
        const TestNumber code(dft::dft_variant_code, variant);
        CheckLine<float>(n, forward);
        CheckLine<double>(n, forward);
    }
}

TEST(DftTransform, AllLengthsUpTo600) {
    for (std::size_t n = 1; n <= 600; ++n) {
        CheckLine(n);
    }
}

TEST(DftTransform, AwkwardLengths) {
    const std::size_t lengths[] = {
        601,     607,     1009,    2003,    10007,                   // primes
        961,     1369,    22201,   22801,                            // and their squares, of 149 and 151 too
        1202,    2018,    3998,    4006,                             // and twice them
        713,     1124,    2101,    2660,    3100,    4100,           // sides of pictures
        2000,    2010,    2100,    16807,   19683,   31209,   44100, // one group of stages and more
        66289,   66603,   102941,                                    // 151 * 439 and 311 * 331 by Bluestein's method
        1 << 10, 1 << 11, 1 << 12, 1 << 13, 1 << 14, 1 << 15, 1 << 16, 1 << 17, 1 << 19, 1 << 20,
    };
    for (const std::size_t n : lengths) {
        CheckLine(n);
    }
}

} // namespace
