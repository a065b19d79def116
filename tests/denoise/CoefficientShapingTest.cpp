// The rules of shrinkage and the regions of the coefficients that they work on.
#include "denoise/TestPlanes.h"
#include "reference/denoise_slow.h"

#include <cmath>
#include <limits>
#include <random>

namespace {

using reference::DenoiseSlow;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(CoefficientShaping, ShrinkageRules) {
    const struct {
        int type;
        float t, coefficient, result;
    } rows[] = {{0, 5, 7.5f, 2.5f},   {0, 5, -7.5f, -2.5f}, {0, 5, -4.9f, 0},       {0, 0, 0, 0},
                {0, 0, -3, -3},       {0, -2, 3, 5},        {0, -2, 0, 0},          {0, 1, kInfinity, kInfinity},
                {1, 5, -7.5f, -7.5f}, {1, 5, -5, -5},       {1, 5, -4.9f, 0},       {2, 5, -10, -7.5f},
                {2, 5, 5, 0},         {2, 5, 4.9f, 0},      {2, 0, 1e-30f, 1e-30f}, {3, 5, 4.9f, 4.9f},
                {-1, 5, 4.9f, 4.9f},  {7, 5, -7.5f, -7.5f}};
    for (const auto& row : rows) {
        CImageDenoiser denoiser;
        denoiser.SetThresholdType(row.type);
        float coefficient = row.coefficient;
        denoiser._coeff_thresholding(coefficient, row.t);
        EXPECT_EQ(coefficient, row.result) << "type " << row.type << ", t " << row.t << ", from " << row.coefficient;
    }
    CImageDenoiser garrote;
    garrote.SetThresholdType(2);
    float zero = 0.0f;
    garrote._coeff_thresholding(zero, 0.0f);
    EXPECT_TRUE(std::isnan(zero)) << "0 / 0 is not guarded against";
}

std::vector<float> Coefficients(std::size_t count, float t, std::uint32_t seed) {
    std::mt19937 generator(seed);
    std::vector<float> plane(count);
    for (float& coefficient : plane) {
        const float any = static_cast<float>(generator()) * 0x1p-28f - 8.0f;
        const float special[] = {t, -t, 0.0f, -0.0f, std::nextafter(t, 0.0f), std::nextafter(t, 99.0f)};
        coefficient = generator() % 4 == 0 ? special[generator() % 6] : any;
    }
    return plane;
}

TEST(CoefficientShaping, Regions) {
    using Filter = void (CImageDenoiser::*)(float*, float);
    const std::pair<Filter, DenoiseSlow::Region> filters[] = {
        {&CImageDenoiser::_filter_all, &DenoiseSlow::IsAny},
        {&CImageDenoiser::_filter_high, &DenoiseSlow::IsHigh},
        {&CImageDenoiser::_filter_middle, &DenoiseSlow::IsMiddle},
        {&CImageDenoiser::_filter_low, &DenoiseSlow::IsLow},
    };
    const std::pair<int, int> sizes[] = {{1, 1},   {1, 9},   {2, 3},   {7, 1},    {8, 8},
                                         {15, 16}, {17, 31}, {64, 48}, {101, 75}, {75, 203}};
    const float t = 3.7f;
    for (const auto& [width, height] : sizes) {
        // The four regions by each rule, and then the bands, the last of which is none.
        for (int k = 0; k < 20; ++k) {
            SCOPED_TRACE(::testing::Message() << width << " by " << height << (k < 16 ? ", region " : ", band ")
                                              << k % 4 << ", type " << k / 4);
            const DenoiseSlow slow{width, height, k / 4};
            CImageDenoiser denoiser = DenoiserOf(width, height);
            denoiser.SetThresholdType(slow.type);
            std::vector<float> expected = Coefficients(static_cast<std::size_t>(width * height), t, 5);
            GuardedCopy plane(expected, 4);
            const auto& [filter, region] = filters[k % 4];
            if (k < 16) {
                slow.ShrinkWhere(expected, t, region);
                (denoiser.*filter)(plane.data(), t);
            } else {
                slow.KeepBand(expected, k % 4);
                denoiser._only_one_band(plane.data(), k % 4);
            }
            ExpectSame(expected, plane, width);
        }
    }
}

} // namespace
