// What an object of CImageDenoiser holds, and the conversion of its samples.
#include "denoise/TestPlanes.h"

#include <cstring>
#include <limits>
#include <tuple>

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

auto Fields(CImageDenoiser& denoiser) {
    return std::tie(denoiser.m_Width, denoiser.m_Height, denoiser.m_Levels, denoiser.m_ThresholdType,
                    denoiser.m_Threshold, denoiser.m_ThresholdMiddle, denoiser.m_AutoMeasure, denoiser.m_EstLeft,
                    denoiser.m_EstTop);
}

TEST(DenoiserState, DefaultsAndSettersWithoutATest) {
    CImageDenoiser denoiser;
    EXPECT_EQ(Fields(denoiser), std::tuple(-1, -1, 3, 0, 5.0f, 6.0f, true, 0, 0));
    EXPECT_TRUE(denoiser.IsAuto());
    denoiser.SetSize(-7, 0);
    denoiser.SetThresholdType(99);
    denoiser.SetAutoMeasure(false);
    denoiser.Denoise_RGB(nullptr, nullptr, nullptr);
    EXPECT_EQ(Fields(denoiser), std::tuple(-7, 0, 3, 99, 5.0f, 6.0f, false, 0, 0));
    EXPECT_FALSE(denoiser.IsAuto());
}

TEST(DenoiserState, CopiesCarryAllFields) {
    CImageDenoiser denoiser;
    const std::tuple values(1, 2, 4, -3, 5.5f, 7.25f, false, 8, 16);
    Fields(denoiser) = values;
    CImageDenoiser copy(denoiser);
    EXPECT_EQ(Fields(copy), values);
    CImageDenoiser assigned;
    EXPECT_EQ(&(assigned = denoiser), &assigned);
    EXPECT_EQ(Fields(assigned), values);
    int left, top, right, bottom;
    assigned.GetEstRect(left, top, right, bottom);
    EXPECT_EQ(std::tuple(left, top, right, bottom), std::tuple(8, 16, 104, 112));
}

// The second threshold follows from the first on a flag of exactly -1; it cannot be chosen.
TEST(DenoiserState, SecondThresholdIsAFlag) {
    const struct {
        float first, second, reportedSecond;
    } rows[] = {{8.0f, -1.0f, 9.6000004f}, {8.0f, 3.0f, 6.0f},    {8.0f, -1.0000001f, 6.0f}, {8.0f, 1.0f, 6.0f},
                {0.0f, -1.0f, 0.0f},       {-5.0f, -1.0f, -6.0f}, {1.1f, -1.0f, 1.1f * 1.2f}};
    for (const auto& row : rows) {
        CImageDenoiser denoiser;
        denoiser.SetThreshold(row.first, row.second);
        float first = 0, second = 0;
        denoiser.GetThreshold(first, second);
        EXPECT_EQ(first, row.first);
        EXPECT_EQ(second, row.reportedSecond) << row.first << ", " << row.second;
    }
}

TEST(DenoiserPixels, Restored) {
    const float kBelow = 0.49999997f; // a sum of floats would give 1
    const struct {
        float sample;
        unsigned char pixel;
        float storedBack;
    } rows[] = {{kBelow, 0, kBelow},   {0.0f, 0, 0.0f},           {-0.0f, 0, 0.0f},        {-3.7f, 0, 0.0f},
                {-kInfinity, 0, 0.0f}, {0.5f, 1, 0.5f},           {254.49f, 254, 254.49f}, {254.5f, 255, 254.5f},
                {255.0f, 255, 255.0f}, {255.00002f, 255, 254.5f}, {1e30f, 255, 254.5f},    {kInfinity, 255, 254.5f},
                {kNaN, 0, 0.0f},       {-kNaN, 0, 0.0f},          {1e-40f, 0, 1e-40f}};
    CImageDenoiser denoiser = DenoiserOf(1, 1);
    for (const auto& row : rows) {
        float sample = row.sample;
        unsigned char pixel = 77;
        denoiser._restore_pixel(&sample, &pixel);
        EXPECT_EQ(pixel, row.pixel) << row.sample;
        EXPECT_EQ(std::memcmp(&sample, &row.storedBack, sizeof sample), 0) << row.sample << " became " << sample;
    }
}

} // namespace
