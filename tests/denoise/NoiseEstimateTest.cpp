// Where the noise is measured, and what comes out.
#include "common/GuardedBuffer.h"
#include "common/VectorClassTest.h"
#include "denoise/TestPlanes.h"
#include "reference/denoise_slow.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using reference::DenoiseSlow;
using Plane = std::vector<std::uint8_t>;

constexpr int kBefore = 3; // a region that no search finds, to see whether it stays

struct Region {
    int left;
    int top;
    friend bool operator==(const Region&, const Region&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Region& region) {
        return out << region.left << ", " << region.top;
    }
};

Region Probed(const Plane& source, int width, int height) {
    GuardedBuffer<std::uint8_t> plane(source.size(), 1);
    std::copy(source.begin(), source.end(), plane.data());
    CImageDenoiser denoiser = DenoiserOf(width, height);
    denoiser.m_EstLeft = denoiser.m_EstTop = kBefore;
    denoiser._probe_region(plane.data());
    EXPECT_TRUE(SameBytes(source.data(), plane.data(), source.size())) << "the plane is only read";
    return {denoiser.m_EstLeft, denoiser.m_EstTop};
}

TEST(ProbeRegion, FlatPlanes) {
    const Region stays = {kBefore, kBefore};
    const Region first = {0, 0};
    const struct {
        int width, height, level;
        Region found;
    } rows[] = {
        {120, 120, 128, first}, {120, 120, 51, first},  {120, 120, 200, first}, {120, 120, 50, stays},
        {120, 120, 201, stays}, {96, 96, 128, stays},   {103, 200, 128, stays}, {200, 103, 128, stays},
        {104, 104, 128, first}, {104, 103, 128, stays}, {105, 111, 128, first}, {7, 7, 128, stays},
    };
    for (const auto& row : rows) {
        const Plane plane(static_cast<std::size_t>(row.width * row.height), static_cast<std::uint8_t>(row.level));
        EXPECT_EQ(Probed(plane, row.width, row.height), row.found)
            << row.width << " by " << row.height << " of " << row.level;
    }
}

TEST(ProbeRegion, Patches) {
    struct Patch {
        int left, top, level, noise;
    };
    const struct {
        const char* what;
        int width, height;
        std::vector<Patch> patches;
        Region found;
    } rows[] = {
        {"two alike: the upper one", 320, 320, {{16, 200, 120, 0}, {200, 8, 90, 0}}, {200, 8}},
        {"two alike in a row: the left one", 320, 200, {{200, 40, 120, 0}, {40, 40, 90, 0}}, {40, 40}},
        {"the flatter one", 320, 320, {{16, 8, 120, 3}, {200, 200, 90, 2}}, {200, 200}},
        {"too dark", 320, 200, {{16, 8, 50, 0}, {200, 40, 90, 3}}, {200, 40}},
        {"too bright", 320, 200, {{16, 8, 201, 0}, {200, 40, 90, 3}}, {200, 40}},
        {"bright enough", 320, 200, {{16, 8, 200, 0}, {200, 40, 90, 3}}, {16, 8}},
        {"last but one in both directions", 208, 208, {{104, 104, 120, 0}}, {104, 104}},
    };
    for (const auto& row : rows) {
        Plane plane = NoisyPlane(row.width, row.height, 128, 60, 3);
        for (const Patch& patch : row.patches) {
            PutPatch(plane, row.width, patch.left, patch.top, 96, patch.level, patch.noise);
        }
        EXPECT_EQ(Probed(plane, row.width, row.height), row.found) << row.what;
    }
    Plane plane = NoisyPlane(208, 208, 128, 60, 3);
    PutPatch(plane, 208, 112, 112, 96, 120, 0); // the last square is not tried
    EXPECT_EQ(Probed(plane, 208, 208), (Region{104, 104}));
}

TEST(ProbeRegion, EqualsThePlainSearch) {
    int seed = 0;
    for (const int width : {103, 104, 105, 111, 112, 150, 230}) {
        for (const int height : {103, 104, 119, 120, 177}) {
            for (const int noise : {0, 3, 40, 255}) { // the last are blocks of much the same statistics
                const int level = 40 + 30 * (++seed % 8);
                const Plane plane = NoisyPlane(width, height, level, noise, static_cast<std::uint32_t>(seed));
                DenoiseSlow slow{width, height};
                slow.left = slow.top = kBefore;
                slow.Probe(plane);
                EXPECT_EQ(Probed(plane, width, height), (Region{slow.left, slow.top}))
                    << width << " by " << height << ", level " << level << ", noise " << noise;
            }
        }
    }
}

class NoiseEstimateTest : public VectorClassTest {};

TEST_P(NoiseEstimateTest, EqualsThePlainForm) {
    const struct {
        int width, height, left, top, noise;
    } rows[] = {{96, 96, 0, 0, 9}, {97, 103, 1, 7, 40}, {130, 99, 34, 3, 255}, {130, 99, 8, 0, 0}};
    for (const auto& row : rows) {
        const Plane plane = NoisyPlane(row.width, row.height, 128, row.noise, 2);
        DenoiseSlow slow{row.width, row.height};
        slow.left = row.left;
        slow.top = row.top;
        GuardedBuffer<std::uint8_t> guarded(plane.size());
        std::copy(plane.begin(), plane.end(), guarded.data());
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
