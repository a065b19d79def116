// The sliding transform of every vector class beside its definition, block by block in double precision.
#include "restore/SlidingDct.h"

#include "common/ForcedVectorClass.h"
#include "common/GuardedBuffer.h"
#include "common/VectorClassTest.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace {

constexpr int kSide = restore::kBlockSide;
constexpr int kMargin = restore::kBlockOverlap;
constexpr double kPi = 3.14159265358979323846;

struct Samples {
    Samples(int columns, int rows) : stride(columns + 2 * kMargin), values(Size(rows)) {}
    std::size_t Size(int rows) const { return static_cast<std::size_t>(stride * (rows + 2 * kMargin)); }
    std::size_t Index(int x, int y) const { return static_cast<std::size_t>((y + kMargin) * stride + x + kMargin); }

    int stride;
    std::vector<float> values;
};

double Cosine(int k, int i) {
    return std::sqrt((k == 0 ? 1.0 : 2.0) / kSide) * std::cos(kPi * k * (2 * i + 1) / (2.0 * kSide));
}

using Block = std::vector<double>;

// With `isInverse`, from coefficients to samples.
Block Transformed(const Block& block, bool isInverse) {
    Block half(kSide * kSide), result(kSide * kSide);
    const auto factor = [&](int to, int from) { return isInverse ? Cosine(from, to) : Cosine(to, from); };
    for (int k = 0; k < kSide * kSide * kSide; ++k) {
        half[static_cast<std::size_t>(k / kSide)] +=
            factor(k / kSide % kSide, k % kSide) *
            block[static_cast<std::size_t>(k / kSide / kSide * kSide + k % kSide)];
    }
    for (int k = 0; k < kSide * kSide * kSide; ++k) {
        result[static_cast<std::size_t>(k / kSide)] +=
            factor(k / kSide / kSide, k % kSide) *
            half[static_cast<std::size_t>(k % kSide * kSide + k / kSide % kSide)];
    }
    return result;
}

double Bessel(double x) {
    double term = 1.0, sum = 1.0;
    for (int k = 1; k < 30; ++k) {
        sum += term *= (x / 2 / k) * (x / 2 / k);
    }
    return sum;
}

double Window(int i) {
    const double place = (2 * i + 1.0) / kSide - 1;
    return Bessel(2 * std::sqrt(1 - place * place)) / Bessel(2);
}

std::vector<double> Plain(const Samples& source, const Samples* pilot, int columns, int rows,
                          const restore::BlockNoise& noise, double threshold) {
    const auto count = static_cast<std::size_t>(columns * rows);
    std::vector<double> sums(count), weights(count);
    const auto blockAt = [&](const Samples& samples, int left, int top) {
        Block block(kSide * kSide);
        for (int k = 0; k < kSide * kSide; ++k) {
            block[static_cast<std::size_t>(k)] =
                static_cast<double>(samples.values[samples.Index(left + k % kSide, top + k / kSide)]);
        }
        return Transformed(block, false);
    };
    for (int top = -kMargin; top < rows; top += 2) {
        for (int left = -kMargin; left < columns; left += 2) {
            Block block = blockAt(source, left, top);
            const Block guide = pilot == nullptr ? block : blockAt(*pilot, left, top);
            double kept = 0.0;
            for (int k = 0; k < kSide * kSide; ++k) {
                const auto at = static_cast<std::size_t>(k);
                const auto variance = static_cast<double>(noise.variance[k / kSide][k % kSide]);
                const double power = guide[at] * guide[at];
                const double gain = pilot != nullptr                                      ? power / (power + variance)
                                    : k == 0 || power >= threshold * threshold * variance ? 1.0
                                                                                          : 0.0;
                block[at] *= gain;
                kept += gain * gain * variance;
            }
            block = Transformed(block, true);
            for (int k = 0; k < kSide * kSide; ++k) {
                const int x = left + k % kSide;
                const int y = top + k / kSide;
                if (x >= 0 && x < columns && y >= 0 && y < rows) {
                    const double weight = Window(k % kSide) * Window(k / kSide) / kept;
                    sums[static_cast<std::size_t>(y * columns + x)] += weight * block[static_cast<std::size_t>(k)];
                    weights[static_cast<std::size_t>(y * columns + x)] += weight;
                }
            }
        }
    }
    for (std::size_t k = 0; k < count; ++k) {
        sums[k] /= weights[k];
    }
    return sums;
}

class SlidingDctTest : public VectorClassTest {};

TEST_P(SlidingDctTest, EqualsTheDefinitionAndThePortableClass) {
    restore::BlockNoise noise;
    for (int k = 0; k < kSide * kSide; ++k) {
        noise.variance[k / kSide][k % kSide] = 1.0f / static_cast<float>(1 + k % 5 + k / kSide);
    }
    const struct {
        int columns, rows;
        float threshold;
    } tiles[] = {{2, 2, 2.7f}, {16, 18, 2.7f}, {36, 20, 0.5f}, {restore::kTileColumns, 4, 2.7f}};
    for (const auto& size : tiles) {
        const int columns = size.columns;
        const int rows = size.rows;
        const float threshold = size.threshold;
        SCOPED_TRACE(testing::Message() << columns << " by " << rows);
        Samples source(columns, rows), pilot(columns, rows);
        std::mt19937 generator(3);
        std::normal_distribution<float> normal;
        for (std::size_t k = 0; k < source.values.size(); ++k) {
            pilot.values[k] = 6.0f * std::sin(static_cast<float>(k % 97) / 9.0f);
            source.values[k] = pilot.values[k] + normal(generator);
        }
        for (const Samples* guide : {static_cast<const Samples*>(nullptr), static_cast<const Samples*>(&pilot)}) {
            GuardedBuffer<float> result(static_cast<std::size_t>(columns * rows));
            const auto run = [&] {
                const restore::DctTile tile = {source.values.data() + source.Index(0, 0),
                                               source.stride,
                                               guide == nullptr ? nullptr : guide->values.data() + guide->Index(0, 0),
                                               pilot.stride,
                                               result.data(),
                                               columns,
                                               columns,
                                               rows,
                                               &noise,
                                               threshold};
                const restore::SlidingDct& functions = restore::ActiveSlidingDct();
                GuardedBuffer<float> scratch(functions.scratchFloats, 4);
                functions.DenoiseTile(tile, scratch.data());
                EXPECT_TRUE(scratch.GuardsIntact() && result.GuardsIntact());
                return std::vector<float>(result.data(), result.data() + result.size());
            };
            const std::vector<float> actual = run();
            const std::vector<double> expected =
                Plain(source, guide, columns, rows, noise, static_cast<double>(threshold));
            for (std::size_t k = 0; k < actual.size(); ++k) {
                ASSERT_NEAR(static_cast<double>(actual[k]), expected[k], 2e-4) << "sample " << k;
            }
            const ForcedVectorClass portable(simd::VectorClass::Portable);
            EXPECT_TRUE(SameBytes(run().data(), actual.data(), actual.size()));
        }
    }
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(SlidingDctTest);

} // namespace
