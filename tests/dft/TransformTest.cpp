// What complex transforms compute, held to the definition in wider precision.
#include "dft/dft.h"

#include "common/VectorClassTest.h"
#include "dft/TestJob.h"
#include "dft/TestSurroundings.h"
#include "reference/dft_slow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace {

using dft_slow::Wide;
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

template <typename Real>
auto RandomLine(int n) {
    return dft_slow::RandomLine<dft::Complex<Real>>(static_cast<std::size_t>(n), static_cast<std::uint32_t>(n));
}

// The forward transform of RandomLine(n), which is the same line in both precisions.
WideLine WideForward(int n) {
    return dft_slow::Transform(RandomLine<float>(n), -1);
}

// The backward transform is the forward one with the index reversed.
WideLine Reversed(WideLine x) {
    std::reverse(x.begin() + 1, x.end());
    return x;
}

// All placements and directions.
template <typename Real>
void CheckLine(int n, const WideLine& forward) {
    const auto x = RandomLine<Real>(n);
    const WideLine backward = Reversed(forward);
    for (const std::int32_t placement : kPlacements) {
        const TestJob<Real> job({n}, placement);
        for (const int sign : kSigns) {
            EXPECT_LE(dft_slow::RelativeError(job.Run(sign, x), sign < 0 ? forward : backward), Bound<Real>(x.size()))
                << "length " << n << ", placement " << placement << ", sign " << sign << ", element bytes "
                << sizeof(x[0]);
        }
    }
}

void CheckLine(int n, const WideLine& forward) {
    CheckLine<float>(n, forward);
    CheckLine<double>(n, forward);
}

TEST(DftTransform, AllLengthsUpTo600) {
    for (int n = 1; n <= 600; ++n) {
        CheckLine(n, WideForward(n));
    }
}

TEST(DftTransform, AwkwardLengths) {
    const int lengths[] = {
        601,     607,     1009,    2003,    10007,                   // primes
        961,     1369,    22201,   22801,                            // and their squares, of 149 and 151 too
        1202,    2018,    3998,    4006,                             // and twice them
        713,     1124,    2101,    2660,    3100,    4100,           // sides of pictures
        2000,    2010,    2100,    16807,   19683,   31209,   44100, // one group of stages and more
        66289,   66603,   102941,                                    // 151 * 439 and 311 * 331 by Bluestein's method
        1 << 10, 1 << 11, 1 << 12, 1 << 13, 1 << 14, 1 << 15, 1 << 16, 1 << 17, 1 << 19, 1 << 20,
    };
    for (const int n : lengths) {
        CheckLine(n, WideForward(n));
    }
}

// On both sides of the lengths at which variants go other ways.
TEST(DftTransform, Variants) {
    for (const int n : {1, 2, 4, 60, 128, 511, 512, 1023, 1024, 2048, 4095, 4096, 8192, 16384, 32768, 65536}) {
        const WideLine forward = WideForward(n);
        for (std::int32_t variant = 0; variant < dft::kVariants; ++variant) {
            const TestNumber code(dft::dft_variant_code, variant);
            SCOPED_TRACE(::testing::Message() << "variant " << variant);
            CheckLine(n, forward);
        }
    }
}

class DftTransformTest : public VectorClassTest {};

TEST_P(DftTransformTest, EqualsTheDefinition) {
    for (const int n :
         {2, 3, 4, 5, 6, 7, 8, 9, 16, 17, 20, 32, 60, 64, 97, 128, 149, 151, 302, 625, 1024, 1124, 2100}) {
        CheckLine(n, WideForward(n));
    }
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(DftTransformTest);

} // namespace
