// The means over like neighbours, of every vector class against the plain form, bit for bit.
#include "common/GuardedBuffer.h"
#include "common/VectorClassTest.h"
#include "denoise/TestPlanes.h"
#include "reference/denoise_slow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace {

using reference::DenoiseSlow;

struct Size {
    int width;
    int height;
};

// Heights about the rows that a band of each class and type holds, widths shorter and longer than such a band is tall.
constexpr Size kSizes[] = {{1, 1},  {2, 1},  {1, 2},   {5, 3},   {1, 40},   {40, 1},  {9, 9},
                           {70, 7}, {3, 65}, {33, 31}, {34, 32}, {131, 33}, {67, 64}, {200, 17}};
constexpr int kTolerances[] = {0, 1, 50, 255, 256, 40000};

template <typename Sample, typename Expect, typename Actual>
void ExpectSame(const std::vector<Sample>& source, const Size& size, Expect expect, Actual actual) {
    std::vector<Sample> expected = source;
    expect(expected);
    GuardedBuffer<Sample> plane(source.size(), sizeof(Sample));
    std::copy(source.begin(), source.end(), plane.data());
    actual(plane.data());
    if constexpr (std::is_floating_point_v<Sample>) { // which of the many NaNs is left open
        const auto unify = [](Sample x) { return std::isnan(x) ? std::numeric_limits<Sample>::quiet_NaN() : x; };
        std::transform(expected.begin(), expected.end(), expected.begin(), unify);
        std::transform(plane.data(), plane.data() + plane.size(), plane.data(), unify);
    }
    EXPECT_TRUE(SameBytes(expected.data(), plane.data(), plane.size(), static_cast<std::size_t>(size.width)));
    EXPECT_TRUE(plane.GuardsIntact());
}

std::vector<std::uint8_t> RandomBytes(const Size& size, int noise) {
    return NoisyPlane(size.width, size.height, 120, noise, 8);
}

// Multiples of 0.5 make differences that equal the tolerance; zeros of both signs are skipped.
std::vector<float> RandomFloats(const Size& size, bool unordered) {
    std::mt19937 generator(9);
    std::vector<float> plane(static_cast<std::size_t>(size.width * size.height));
    const float infinity = std::numeric_limits<float>::infinity();
    const float special[] = {infinity, -infinity, std::numeric_limits<float>::quiet_NaN()};
    for (float& sample : plane) {
        const std::uint32_t kind = generator() % 16;
        const float fine = static_cast<float>(generator()) * 0x1p-25f - 64.0f;
        sample = kind == 0   ? 0.0f
                 : kind == 1 ? -0.0f
                 : kind < 8  ? std::floor(fine * 2.0f) / 2.0f
                             : fine * std::fabs(fine) / 16.0f;
        sample = unordered && generator() % 25 == 0 ? special[generator() % 3] : sample;
    }
    return plane;
}

class NeighbourMeansTest : public VectorClassTest {};

TEST_P(NeighbourMeansTest, BytesEqualThePlainForm) {
    for (const Size& size : kSizes) {
        for (const int noise : {255, 30}) {
            for (const int tolerance : kTolerances) {
                for (int radius = 0; radius <= 2; ++radius) {
                    SCOPED_TRACE(::testing::Message() << size.width << " by " << size.height << ", noise " << noise
                                                      << ", tolerance " << tolerance << ", radius " << radius);
                    CImageDenoiser denoiser = DenoiserOf(size.width, size.height);
                    ExpectSame(
                        RandomBytes(size, noise), size,
                        [&](auto& plane) {
                            DenoiseSlow{size.width, size.height}.SmoothPlane(plane, radius, tolerance);
                        },
                        [&](auto* plane) { denoiser._smooth_plane(plane, radius, tolerance); });
                }
            }
        }
    }
}

TEST_P(NeighbourMeansTest, FloatsEqualThePlainForm) {
    for (const Size& size : kSizes) {
        const int w = size.width;
        const int h = size.height;
        const struct {
            int left, top, width, height;
        } rects[] = {{w / 2, h / 2, w / 2, h / 2}, {0, 0, w, h}, {w / 3, h / 4, w / 3, h / 2}, {w - 1, h - 1, 1, 1}};
        for (const auto& rect : rects) {
            for (const int tolerance : {-1, 0, 1, 50, 40000}) {
                for (int radius = 0; radius <= 2; ++radius) {
                    for (const bool unordered : {false, true}) {
                        SCOPED_TRACE(::testing::Message()
                                     << w << " by " << h << " from " << rect.left << ", " << rect.top << ", tolerance "
                                     << tolerance << ", radius " << radius << ", unordered " << unordered);
                        CImageDenoiser denoiser = DenoiserOf(w, h);
                        ExpectSame(
                            RandomFloats(size, unordered), size,
                            [&](auto& plane) {
                                DenoiseSlow{w, h}.SmoothCoefficients(plane, radius, tolerance, rect.left, rect.top,
                                                                     rect.width, rect.height);
                            },
                            [&](auto* plane) {
                                denoiser._smooth_coeff_rect(plane, radius, tolerance, rect.left, rect.top, rect.width,
                                                            rect.height);
                            });
                    }
                }
            }
        }
    }
}

// Samples later in the scan see the means already stored.
TEST_P(NeighbourMeansTest, OrderIsThatOfTheScan) {
    const struct {
        Size size;
        std::vector<std::uint8_t> before;
        std::vector<std::uint8_t> after;
    } rows[] = {
        {{2, 1}, {10, 70}, {10, 70}},
        {{2, 1}, {10, 60}, {35, 47}},
        {{1, 2}, {10, 60}, {35, 47}},
        {{2, 2}, {0, 30, 60, 90}, {15, 35, 50, 70}},
    };
    for (const auto& row : rows) {
        std::vector<std::uint8_t> plane = row.before;
        CImageDenoiser denoiser = DenoiserOf(row.size.width, row.size.height);
        denoiser._smooth_plane(plane.data(), 1, 50);
        EXPECT_EQ(plane, row.after);
    }
    std::vector<float> coefficients = {10, 0, 40, -11, 60};
    DenoiserOf(5, 1)._smooth_coeff_rect(coefficients.data(), 1, 50, 0, 0, 5, 1);
    EXPECT_EQ(coefficients, (std::vector<float>{5, 0, 20, 4.5f, 60}));
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(NeighbourMeansTest);

} // namespace
