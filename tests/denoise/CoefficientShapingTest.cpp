// The rules of shrinkage and the regions of the coefficients that they work on.
#include "common/GuardedBuffer.h"
#include "denoise/TestPlanes.h"
#include "reference/denoise_slow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace {

using reference::DenoiseSlow;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(CoefficientShaping, ShrinkageRules) {
    const struct {
        int type;
        float t;
        float coefficient;
        float result;
    } rows[] = {
        {0, 5, 7.5f, 2.5f},
        {0, 5, -7.5f, -2.5f},
        {0, 5, 5, 0},
        {0, 5, 4.9f, 0},
        {0, 5, -5, 0},
        {0, 5, -4.9f, 0},
        {0, 0, 0, 0},
        {0, 0, -3, -3},
        {0, -2, 3, 5},
        {0, -2, 0, 0},
        {0, 1, kInfinity, kInfinity},
        {1, 5, 7.5f, 7.5f},
        {1, 5, 5, 5},
        {1, 5, -5, -5},
        {1, 5, 4.9f, 0},
        {1, 5, -4.9f, 0},
        {2, 5, 10, 7.5f},
        {2, 5, -10, -7.5f},
        {2, 5, 5, 0},
        {2, 5, 4.9f, 0},
        {2, 0, 1e-30f, 1e-30f},
        {3, 5, 4.9f, 4.9f},
        {-1, 5, 4.9f, 4.9f},
        {7, 5, -7.5f, -7.5f},
    };
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
    const struct {
        const char* name;
        void (CImageDenoiser::*filter)(float*, float);
        DenoiseSlow::Region region;
    } filters[] = {
        {"_filter_all", &CImageDenoiser::_filter_all, &DenoiseSlow::IsAny},
        {"_filter_high", &CImageDenoiser::_filter_high, &DenoiseSlow::IsHigh},
        {"_filter_middle", &CImageDenoiser::_filter_middle, &DenoiseSlow::IsMiddle},
        {"_filter_low", &CImageDenoiser::_filter_low, &DenoiseSlow::IsLow},
    };
    const struct {
        int width;
        int height;
    } sizes[] = {{1, 1}, {1, 9}, {2, 3}, {7, 1}, {8, 8}, {15, 16}, {17, 31}, {64, 48}, {101, 75}, {75, 203}};
    const float t = 3.7f;
    for (const auto& [width, height] : sizes) {
        const std::vector<float> source = Coefficients(static_cast<std::size_t>(width * height), t, 5);
        const auto columns = static_cast<std::size_t>(width);
        CImageDenoiser denoiser = DenoiserOf(width, height);
        for (int type = 0; type < 4; ++type) {
            denoiser.SetThresholdType(type);
            for (const auto& filter : filters) {
                DenoiseSlow slow{width, height, type};
                std::vector<float> expected = source;
                slow.ShrinkWhere(expected, t, filter.region);
                GuardedBuffer<float> plane(source.size(), 4);
                std::copy(source.begin(), source.end(), plane.data());
                (denoiser.*filter.filter)(plane.data(), t);
                EXPECT_TRUE(SameBytes(expected.data(), plane.data(), plane.size(), columns) && plane.GuardsIntact())
                    << filter.name << ", type " << type << ", " << width << " by " << height;
            }
        }
        for (const int band : {-1, 0, 1, 2, 3}) {
            std::vector<float> expected = source;
            DenoiseSlow{width, height}.KeepBand(expected, band);
            GuardedBuffer<float> plane(source.size(), 4);
            std::copy(source.begin(), source.end(), plane.data());
            denoiser._only_one_band(plane.data(), band);
            EXPECT_TRUE(SameBytes(expected.data(), plane.data(), plane.size(), columns) && plane.GuardsIntact())
                << "band " << band << ", " << width << " by " << height;
        }
    }
}

// On a plane of 800 by 800 the rim at an eighth, 100, belongs to neither region of the pipeline.
TEST(CoefficientShaping, Rim) {
    CImageDenoiser denoiser = DenoiserOf(800, 800);
    std::vector<float> plane(800 * 800, 1.0f);
    denoiser._filter_high(plane.data(), 5.0f);
    denoiser._filter_middle(plane.data(), 6.0f);
    EXPECT_EQ(plane[100 * 800 + 100], 1.0f);
    EXPECT_EQ(plane[101 * 800 + 100], 0.0f);
    EXPECT_EQ(plane[100 * 800 + 101], 0.0f);
    EXPECT_EQ(std::count(plane.begin(), plane.end(), 1.0f), 101 * 101);
}

} // namespace
