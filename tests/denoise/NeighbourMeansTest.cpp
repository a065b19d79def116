// The means over like neighbours, of every vector class against the plain form, bit for bit.
#include "common/VectorClassTest.h"
#include "denoise/TestPlanes.h"
#include "reference/denoise_slow.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <utility>

namespace {

using reference::DenoiseSlow;

// Heights about the rows that a band of each class and type holds, widths shorter and longer than such a band is tall.
constexpr std::pair<int, int> kSizes[] = {{1, 1},  {2, 1},  {1, 2},   {5, 3},   {1, 40},   {40, 1},  {9, 9},
                                          {70, 7}, {3, 65}, {33, 31}, {34, 32}, {131, 33}, {67, 64}, {200, 17}};

// Multiples of 0.5 make differences that equal the tolerance; zeros of both signs are skipped.
std::vector<float> RandomFloats(int width, int height, bool unordered) {
    std::mt19937 generator(9);
    std::vector<float> plane(static_cast<std::size_t>(width * height));
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

// Which of the many NaNs comes out is left open.
void UnifyNaNs(float* begin, std::size_t count) {
    std::replace_if(
        begin, begin + count, [](float x) { return std::isnan(x); }, std::nanf(""));
}

class NeighbourMeansTest : public VectorClassTest {};

TEST_P(NeighbourMeansTest, BytesEqualThePlainForm) {
    for (const auto& [w, h] : kSizes) {
        for (const int noise : {255, 30}) {
            for (const int tolerance : {0, 1, 50, 255, 256, 40000}) {
                for (int radius = 0; radius <= 2; ++radius) {
                    SCOPED_TRACE(::testing::Message() << w << " by " << h << ", noise " << noise << ", tolerance "
                                                      << tolerance << ", radius " << radius);
                    std::vector<std::uint8_t> expected = NoisyPlane(w, h, 120, noise, 8);
                    GuardedCopy plane(expected, 1);
                    DenoiseSlow{w, h}.SmoothPlane(expected, radius, tolerance);
                    DenoiserOf(w, h)._smooth_plane(plane.data(), radius, tolerance);
                    ExpectSame(expected, plane, w);
                }
            }
        }
    }
}

TEST_P(NeighbourMeansTest, FloatsEqualThePlainForm) {
    for (const auto& [w, h] : kSizes) {
        const struct {
            int left, top, width, height;
        } rects[] = {{w / 2, h / 2, w / 2, h / 2}, {0, 0, w, h}, {w / 3, h / 4, w / 3, h / 2}, {w - 1, h - 1, 1, 1}};
        for (const auto& [left, top, columns, rows] : rects) {
            for (const int tolerance : {-1, 0, 1, 50, 40000}) {
                for (int k = 0; k < 6; ++k) {
                    const int radius = k / 2;
                    SCOPED_TRACE(::testing::Message()
                                 << w << " by " << h << " from " << left << ", " << top << ", tolerance " << tolerance
                                 << ", radius " << radius << ", unordered " << k % 2);
                    std::vector<float> expected = RandomFloats(w, h, k % 2 != 0);
                    GuardedCopy plane(expected, 4);
                    DenoiseSlow{w, h}.SmoothCoefficients(expected, radius, tolerance, left, top, columns, rows);
                    DenoiserOf(w, h)._smooth_coeff_rect(plane.data(), radius, tolerance, left, top, columns, rows);
                    UnifyNaNs(expected.data(), expected.size());
                    UnifyNaNs(plane.data(), plane.size());
                    ExpectSame(expected, plane, w);
                }
            }
        }
    }
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(NeighbourMeansTest);

} // namespace
