// Whole pictures through every vector class against the plain pipeline, byte for byte.
#include "common/GuardedBuffer.h"
#include "common/VectorClassTest.h"
#include "denoise/TestPlanes.h"
#include "reference/denoise_slow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace {

using reference::DenoiseSlow;
using Plane = std::vector<std::uint8_t>;
using Picture = std::array<Plane, 3>;

constexpr float kMeasured = -1.0f;

struct Row {
    int width;
    int height;
    int type;
    float threshold; // or kMeasured
    int noise;
    bool halfBlack = false;
};

std::ostream& operator<<(std::ostream& out, const Row& row) {
    return out << row.width << " by " << row.height << ", type " << row.type << ", threshold " << row.threshold
               << ", noise " << row.noise;
}

Picture MakePicture(const Row& row) {
    Picture picture;
    for (std::size_t k = 0; k < 3; ++k) {
        picture[k] =
            NoisyPlane(row.width, row.height, 100 + 20 * static_cast<int>(k), row.noise, static_cast<std::uint32_t>(k));
    }
    if (row.halfBlack) {
        std::fill_n(picture[0].begin(), picture[0].size() / 2, std::uint8_t{0});
    }
    return picture;
}

struct Case {
    Row row;
    Picture source;
    Picture expected;
    DenoiseSlow slow;
};

// Made once for all vector classes.
std::vector<Case> MakeCases() {
    const Row rows[] = {
        {96, 96, 0, kMeasured, 9},    {97, 103, 0, kMeasured, 20},
        {104, 104, 1, kMeasured, 20}, {200, 130, 2, kMeasured, 30},
        {113, 211, 0, kMeasured, 60}, {101, 150, 7, kMeasured, 9},
        {640, 48, 0, 5, 12},          {131, 67, 0, 0, 25},
        {131, 67, 1, 5, 25},          {131, 67, 2, 5, 25},
        {131, 67, 7, 5, 25},          {67, 131, 0, 300, 255},
        {64, 64, 1, 40, 255},         {9, 10, 0, 5, 20},
        {300, 9, 2, 3, 20},           {11, 700, 1, 3, 20},
        {64, 64, 2, 0, 0, true}, // garrote of zeros gives unordered coefficients
    };
    std::vector<Case> cases;
    for (const Row& row : rows) {
        Case made{row, MakePicture(row), MakePicture(row), {row.width, row.height, row.type}};
        made.slow.measure = row.threshold == kMeasured;
        made.slow.threshold = row.threshold;
        made.slow.Denoise(made.expected[0], made.expected[1], made.expected[2]);
        cases.push_back(std::move(made));
    }
    return cases;
}

class DenoisePipelineTest : public VectorClassTest {};

TEST_P(DenoisePipelineTest, EqualsThePlainForm) {
    static const std::vector<Case> cases = MakeCases();
    for (const auto& [row, source, expected, slow] : cases) {
        SCOPED_TRACE(row);
        CImageDenoiser denoiser = DenoiserOf(row.width, row.height);
        denoiser.SetThresholdType(row.type);
        denoiser.SetAutoMeasure(row.threshold == kMeasured);
        denoiser.SetThreshold(row.threshold, 0.0f);
        GuardedBuffer<std::uint8_t> y(source[0].size(), 1), u(source[1].size(), 2), v(source[2].size(), 3);
        GuardedBuffer<std::uint8_t>* const planes[] = {&y, &u, &v};
        for (std::size_t k = 0; k < 3; ++k) {
            std::copy(source[k].begin(), source[k].end(), planes[k]->data());
        }
        denoiser.Denoise_YUV(y.data(), u.data(), v.data());
        for (std::size_t k = 0; k < 3; ++k) {
            EXPECT_TRUE(SameBytes(expected[k].data(), planes[k]->data(), y.size(), static_cast<std::size_t>(row.width)))
                << "plane " << k;
            EXPECT_TRUE(planes[k]->GuardsIntact());
        }
        float first = 0, second = 0;
        denoiser.GetThreshold(first, second);
        EXPECT_EQ(first, slow.threshold);
        EXPECT_EQ(second, 6.0f);
        EXPECT_EQ(denoiser.m_EstLeft, slow.left);
        EXPECT_EQ(denoiser.m_EstTop, slow.top);
    }
}

TEST_P(DenoisePipelineTest, BandsEqualThePlainForm) {
    for (const Row& row : {Row{96, 96, 0, 5, 30}, {101, 75, 0, 5, 30}, {33, 200, 0, 5, 255}, {10, 9, 0, 5, 40}}) {
        for (const int band : {-1, 0, 1, 2, 3}) {
            const Plane source = MakePicture(row)[0];
            Plane expected = source;
            DenoiseSlow{row.width, row.height}.ShowBand(expected, band);
            GuardedBuffer<std::uint8_t> plane(source.size(), 1);
            std::copy(source.begin(), source.end(), plane.data());
            DenoiserOf(row.width, row.height).ShowFreqBand(plane.data(), band);
            EXPECT_TRUE(SameBytes(expected.data(), plane.data(), plane.size(), static_cast<std::size_t>(row.width)))
                << row << ", band " << band;
            EXPECT_TRUE(plane.GuardsIntact());
            EXPECT_EQ(band < 0 || band > 2, expected == source) << row << ", band " << band;
        }
    }
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(DenoisePipelineTest);

TEST(DenoisePipeline, SmallSidesAreReportedAndGoOn) {
    const struct {
        int width, height;
        bool reported;
    } rows[] = {{9, 9, false}, {8, 40, true}, {40, 8, true}, {5, 5, true}, {3, 2, true}, {1, 1, true}};
    for (const auto& row : rows) {
        GuardedBuffer<std::uint8_t> planes(3 * static_cast<std::size_t>(row.width * row.height));
        std::uint8_t* const y = planes.data();
        const std::size_t size = planes.size() / 3;
        CImageDenoiser denoiser = DenoiserOf(row.width, row.height);
        denoiser.SetAutoMeasure(false);
        ::testing::internal::CaptureStdout();
        denoiser.Denoise_YUV(y, y + size, y + 2 * size);
        EXPECT_EQ(!::testing::internal::GetCapturedStdout().empty(), row.reported) << row.width << " by " << row.height;
        EXPECT_TRUE(planes.GuardsIntact());
    }
}

// A picture without a fit square is measured where the one before was.
TEST(DenoisePipeline, RegionAndThresholdStayBetweenPictures) {
    const int width = 320;
    const int height = 208;
    Plane y = NoisyPlane(width, height, 128, 60, 3);
    PutPatch(y, width, 200, 104, 96, 120, 2);
    Plane u(y.size(), 128), v(y.size(), 128);
    CImageDenoiser denoiser = DenoiserOf(width, height);
    denoiser.Denoise_YUV(y.data(), u.data(), v.data());
    const float measured = denoiser.m_Threshold;
    EXPECT_GT(measured, 0.5f);

    Plane dark(y.size(), 20);
    PutPatch(dark, width, 200, 104, 96, 20, 15);
    DenoiseSlow slow{width, height};
    slow.left = 200;
    slow.top = 104;
    const float expected = slow.Noise(dark);
    denoiser.Denoise_YUV(dark.data(), u.data(), v.data());
    int left = 0, top = 0, right = 0, bottom = 0;
    denoiser.GetEstRect(left, top, right, bottom);
    EXPECT_EQ((std::array{left, top, right, bottom}), (std::array{200, 104, 296, 200}));
    EXPECT_EQ(denoiser.m_Threshold, expected);

    denoiser.SetAutoMeasure(false);
    denoiser.Denoise_YUV(y.data(), u.data(), v.data());
    EXPECT_EQ(denoiser.m_Threshold, expected) << "the last measured threshold stays in use";
}

// The noise of a flat picture goes; that the result is closer to the truth needs no plain form to compare with.
TEST(DenoisePipeline, TakesNoiseAway) {
    const int width = 256;
    Plane y(width * width, 0);
    PutPatch(y, width, 0, 0, width, 120, 20);
    Plane u = y, v = y;
    const auto error = [](const Plane& plane) {
        double sum = 0;
        for (const std::uint8_t sample : plane) {
            sum += (sample - 120.0) * (sample - 120.0);
        }
        return std::sqrt(sum / static_cast<double>(plane.size()));
    };
    const double before = error(y);
    DenoiserOf(width, width).Denoise_YUV(y.data(), u.data(), v.data());
    EXPECT_LT(error(y), before / 3);
    EXPECT_LT(error(u), before / 2);
}

} // namespace
