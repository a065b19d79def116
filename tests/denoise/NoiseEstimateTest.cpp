// Where the noise is measured, and what comes out.
#include "common/VectorClassTest.h"
#include "denoise/TestPlanes.h"
#include "reference/denoise_slow.h"

#include <utility>

namespace {

using reference::DenoiseSlow;
using Plane = std::vector<std::uint8_t>;

constexpr int kBefore = 3; // a region that no search finds, to see whether it stays

using Region = std::pair<int, int>; // left and top

Region Probed(const Plane& source, int width, int height) {
    GuardedCopy plane(source, 1);
    CImageDenoiser denoiser = DenoiserOf(width, height);
    DenoiseSlow slow{.width = width, .height = height, .left = kBefore, .top = kBefore};
    denoiser.m_EstLeft = denoiser.m_EstTop = kBefore;
    denoiser._probe_region(plane.data());
    slow.Probe(source);
    EXPECT_EQ(Region(denoiser.m_EstLeft, denoiser.m_EstTop), Region(slow.left, slow.top));
    ExpectSame(source, plane, width); // only read
    return {denoiser.m_EstLeft, denoiser.m_EstTop};
}

TEST(ProbeRegion, EqualsThePlainSearchOnNoise) {
    int seed = 0;
    for (const int width : {7, 103, 104, 105, 111, 112, 150, 230}) {
        for (const int height : {7, 103, 104, 119, 120, 177}) {
            for (const int noise : {0, 3, 40, 255}) { // the last are blocks of much the same statistics
                const int level = 40 + 30 * (++seed % 8);
                SCOPED_TRACE(::testing::Message() << width << " by " << height << ", " << level << ", " << noise);
                Probed(NoisyPlane(width, height, level, noise, static_cast<std::uint32_t>(seed)), width, height);
            }
        }
    }
}

// Flat squares, of which the first in the order of the scan is taken, and those that are as flat but too dark or too
// bright. The last square of a row or column is not tried.
TEST(ProbeRegion, EqualsThePlainSearchOnFlatSquares) {
    struct Patch {
        int left, top, size, level, noise;
    };
    const struct {
        int width, height;
        std::vector<Patch> patches;
        Region found;
    } rows[] = {
        {320, 320, {{16, 200, 96, 120, 0}, {200, 8, 96, 90, 0}}, {200, 8}},
        {320, 200, {{200, 40, 96, 120, 0}, {40, 40, 96, 90, 0}}, {40, 40}},
        {320, 320, {{16, 8, 96, 120, 3}, {200, 200, 96, 90, 2}}, {200, 200}},
        {320, 200, {{16, 8, 96, 50, 0}, {200, 40, 96, 90, 3}}, {200, 40}},
        {320, 200, {{16, 8, 96, 51, 0}, {200, 40, 96, 90, 3}}, {16, 8}},
        {320, 200, {{16, 8, 96, 201, 0}, {200, 40, 96, 90, 3}}, {200, 40}},
        {320, 200, {{16, 8, 96, 200, 0}, {200, 40, 96, 90, 3}}, {16, 8}},
        {208, 208, {{104, 104, 96, 120, 0}}, {104, 104}},
        {208, 208, {{112, 112, 96, 120, 0}}, {104, 104}},
        {120, 120, {{0, 0, 120, 50, 0}}, {kBefore, kBefore}},
        {104, 104, {{0, 0, 104, 51, 0}}, {0, 0}},
        {103, 120, {{0, 0, 103, 51, 0}}, {kBefore, kBefore}},
    };
    for (const auto& row : rows) {
        Plane plane = NoisyPlane(row.width, row.height, 128, 60, 3);
        for (const auto& [left, top, size, level, noise] : row.patches) {
            PutPatch(plane, row.width, left, top, size, level, noise);
        }
        EXPECT_EQ(Probed(plane, row.width, row.height), row.found) << "row " << &row - rows;
    }
}

class NoiseEstimateTest : public VectorClassTest {};

TEST_P(NoiseEstimateTest, EqualsThePlainForm) {
    const struct {
        int width, height, left, top, noise;
    } rows[] = {{96, 96, 0, 0, 9}, {97, 103, 1, 7, 40}, {130, 99, 34, 3, 255}, {130, 99, 8, 0, 0}};
    for (const auto& row : rows) {
        const Plane plane = NoisyPlane(row.width, row.height, 128, row.noise, 2);
        const DenoiseSlow slow{.width = row.width, .height = row.height, .left = row.left, .top = row.top};
        GuardedCopy guarded(plane, 0);
        CImageDenoiser denoiser = DenoiserOf(row.width, row.height);
        denoiser.m_EstLeft = row.left;
        denoiser.m_EstTop = row.top;
        denoiser.m_Levels = 1; // three levels are measured whatever those of the object
        const float measured = denoiser._estimate_noise(guarded.data());
        EXPECT_EQ(measured, slow.Noise(plane)) << row.width << " by " << row.height;
        EXPECT_EQ(denoiser.m_Threshold, 5.0f);
    }
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(NoiseEstimateTest);

} // namespace
