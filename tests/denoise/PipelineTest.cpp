// Whole pictures through every vector class against the plain pipeline, byte for byte.
#include "common/FailingNew.h"
#include "common/VectorClassTest.h"
#include "denoise/TestPlanes.h"
#include "reference/denoise_slow.h"

#include <algorithm>
#include <array>
#include <functional>
#include <new>

namespace {

using reference::DenoiseSlow;
using Plane = std::vector<std::uint8_t>;
using Picture = std::array<Plane, 3>;

constexpr float kAuto = -1.0f;

struct Row {
    int width, height, type;
    float threshold; // or kAuto
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
    Picture source, expected;
    DenoiseSlow slow;
};

// Made once for all vector classes. The garrote of zeros, in the last row, gives unordered coefficients.
std::vector<Case> MakeCases() {
    const Row rows[] = {
        {96, 96, 0, kAuto, 9},    {97, 103, 0, kAuto, 20}, {104, 104, 1, kAuto, 20}, {200, 130, 2, kAuto, 30},
        {113, 211, 0, kAuto, 60}, {101, 150, 7, kAuto, 9}, {640, 48, 0, 5, 12},      {131, 67, 0, 0, 25},
        {131, 67, 1, 5, 25},      {131, 67, 2, 5, 25},     {67, 131, 0, 300, 255},   {64, 64, 1, 40, 255},
        {9, 9, 0, 5, 20},         {8, 40, 0, 5, 20},       {5, 5, 0, 5, 20},         {300, 9, 2, 3, 20},
        {11, 700, 1, 3, 20},      {64, 64, 2, 0, 0, true},
    };
    std::vector<Case> cases;
    for (const Row& row : rows) {
        Case made{row, MakePicture(row), MakePicture(row), {row.width, row.height, row.type}};
        made.slow.measure = row.threshold == kAuto;
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
        denoiser.SetAutoMeasure(row.threshold == kAuto);
        denoiser.SetThreshold(row.threshold, 0.0f);
        GuardedCopy y(source[0], 1), u(source[1], 2), v(source[2], 3);
        ::testing::internal::CaptureStdout();
        denoiser.Denoise_YUV(y.data(), u.data(), v.data());
        EXPECT_EQ(::testing::internal::GetCapturedStdout().empty(), std::min(row.width, row.height) > 8);
        ExpectSame(expected[0], y, row.width);
        ExpectSame(expected[1], u, row.width);
        ExpectSame(expected[2], v, row.width);
        float first = 0, second = 0;
        denoiser.GetThreshold(first, second);
        EXPECT_EQ(first, slow.threshold);
        EXPECT_EQ(second, 6.0f);
        EXPECT_EQ(std::pair(denoiser.m_EstLeft, denoiser.m_EstTop), std::pair(slow.left, slow.top));
    }
}

TEST_P(DenoisePipelineTest, BandsEqualThePlainForm) {
    for (const Row& row : {Row{96, 96, 0, 5, 30}, {101, 75, 0, 5, 30}, {33, 200, 0, 5, 255}, {10, 9, 0, 5, 40}}) {
        for (const int band : {-1, 0, 1, 2, 3}) {
            SCOPED_TRACE(::testing::Message() << row << ", band " << band);
            const Plane source = MakePicture(row)[0];
            Plane expected = source;
            DenoiseSlow{row.width, row.height}.ShowBand(expected, band);
            GuardedCopy plane(source, 1);
            DenoiserOf(row.width, row.height).ShowFreqBand(plane.data(), band);
            ExpectSame(expected, plane, row.width);
            EXPECT_EQ(band < 0 || band > 2, expected == source);
        }
    }
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(DenoisePipelineTest);

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
    const float expected = DenoiseSlow{.width = width, .height = height, .left = 200, .top = 104}.Noise(dark);
    denoiser.Denoise_YUV(dark.data(), u.data(), v.data());
    EXPECT_EQ(std::pair(denoiser.m_EstLeft, denoiser.m_EstTop), std::pair(200, 104));
    EXPECT_EQ(denoiser.m_Threshold, expected);

    denoiser.SetAutoMeasure(false);
    denoiser.Denoise_YUV(y.data(), u.data(), v.data());
    EXPECT_EQ(denoiser.m_Threshold, expected) << "the last measured threshold stays in use";

    // The same bytes as a picture that ends one row above the square's end.
    denoiser.SetAutoMeasure(true);
    denoiser.SetSize(width, 104 + 95);
    denoiser.Denoise_YUV(dark.data(), u.data(), v.data());
    EXPECT_EQ(std::pair(denoiser.m_EstLeft, denoiser.m_EstTop), std::pair(0, 0));
}

// A plane is either as it was or finished, and the object as good as new.
TEST(DenoisePipeline, EveryRefusedAllocationIsThrownAndLeaksNothing) {
    const Row size = {113, 120, 0, kAuto, 20};
    const Picture source = MakePicture(size);
    using Planes = std::array<GuardedCopy<std::uint8_t>, 3>;
    const struct {
        const char* name;
        std::function<void(CImageDenoiser&, Planes&)> call;
        int fewest; ///< requests
    } rows[] = {
        {"construct and set up", [](auto&, auto&) { CImageDenoiser(DenoiserOf(96, 96)).SetThreshold(3, -1); }, 0},
        {"Denoise_YUV", [](auto& d, auto& p) { d.Denoise_YUV(p[0].data(), p[1].data(), p[2].data()); }, 20},
        {"ShowFreqBand", [](auto& d, auto& p) { d.ShowFreqBand(p[0].data(), 1); }, 10},
    };
    for (const auto& row : rows) {
        const auto made = [&] { return Planes{{{source[0], 1}, {source[1], 2}, {source[2], 3}}}; };
        Planes expected = made();
        CImageDenoiser denoiser = DenoiserOf(size.width, size.height);
        row.call(denoiser, expected);
        int refused = 0;
        for (bool thrown = true; thrown; ++refused) {
            SCOPED_TRACE(::testing::Message() << row.name << ", request " << refused << " refused");
            Planes planes = made();
            int live = 0;
            {
                FailingNew memory(refused);
                try {
                    row.call(denoiser, planes);
                    thrown = false;
                } catch (const std::bad_alloc&) {
                }
                EXPECT_EQ(thrown, memory.Requests() > refused);
                live = memory.Live();
            }
            EXPECT_EQ(live, 0);
            for (std::size_t k = 0; k < 3; ++k) {
                const std::size_t count = source[k].size();
                EXPECT_TRUE(SameBytes(expected[k].data(), planes[k].data(), count) ||
                            (thrown && SameBytes(source[k].data(), planes[k].data(), count)));
                EXPECT_TRUE(planes[k].GuardsIntact());
            }
        }
        EXPECT_GT(refused, row.fewest) << row.name;
    }
}

} // namespace
