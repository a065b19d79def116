// The filters: given numbers by checksum, derived ones by their mathematics.
#include "wavelet/FilterSets.h"
#include "wavelet/WaveletTransform.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numbers>
#include <numeric>
#include <vector>

namespace {

std::vector<float> Taps(const WaveletFilter& filter) {
    return std::vector<float>(filter.taps, filter.taps + filter.tapCount);
}

// The tap at a filter index, 0 beyond the ends.
float At(const WaveletFilter& filter, int index) {
    const int k = index - filter.firstTap;
    return k >= 0 && k < filter.tapCount ? filter.taps[k] : 0.0f;
}

std::uint32_t Checksum(const WaveletFilterSet& set) {
    std::uint32_t hash = 2166136261u;
    for (const WaveletFilter* filter : {set.lowAnalysis, set.lowSynthesis}) {
        for (const float tap : Taps(*filter)) {
            std::uint32_t bits;
            std::memcpy(&bits, &tap, sizeof bits);
            for (int shift = 0; shift < 32; shift += 8) {
                hash = (hash ^ ((bits >> shift) & 0xFFu)) * 16777619u;
            }
        }
    }
    return hash;
}

TEST(FilterSet, GivenFilters) {
    for (const FilterSetRow& row : kFilterSets) {
        SCOPED_TRACE(row.name);
        const WaveletFilterSet& set = *row.set;
        EXPECT_EQ(set.mirrorExtension, row.mirror);
        EXPECT_EQ(Checksum(set), row.checksum);
        const struct {
            const WaveletFilter& filter;
            const FilterShape& shape;
        } given[] = {{*set.lowAnalysis, row.analysis}, {*set.lowSynthesis, row.synthesis}};
        for (const auto& [filter, shape] : given) {
            EXPECT_EQ(filter.tapCount, shape.count);
            EXPECT_EQ(filter.firstTap, shape.first);
            EXPECT_EQ(filter.origin, -shape.first);
            const std::vector<float> taps = Taps(filter);
            EXPECT_NEAR(std::accumulate(taps.begin(), taps.end(), 0.0), std::numbers::sqrt2, 4e-7); // 18 roundings
        }
        const WaveletTransform transform(set);
        EXPECT_EQ(transform.margin, row.margin);
        EXPECT_EQ(transform.mirrorExtension, row.mirror);
        EXPECT_EQ(transform.highSynthesis, set.highSynthesis);
    }
}

TEST(FilterSet, HighPassFiltersMirrorTheOtherLowPass) {
    for (const FilterSetRow& row : kFilterSets) {
        const WaveletFilterSet& set = *row.set;
        const struct {
            const WaveletFilter& low;
            const WaveletFilter& high;
        } pairs[] = {{*set.lowSynthesis, *set.highAnalysis}, {*set.lowAnalysis, *set.highSynthesis}};
        for (const auto& [low, high] : pairs) {
            EXPECT_EQ(high.tapCount, low.tapCount) << row.name;
            EXPECT_EQ(high.origin, -high.firstTap) << row.name;
            for (int k = -20; k <= 20; ++k) {
                EXPECT_EQ(At(high, 1 - k), (k % 2 != 0 ? 1.0f : -1.0f) * At(low, k)) << row.name << " at " << k;
            }
        }
    }
}

TEST(FilterSet, DerivedExamples) {
    const WaveletFilter& daub4 = *FilterSetDaub4.highAnalysis;
    EXPECT_EQ(daub4.firstTap, -2);
    EXPECT_EQ(Taps(daub4), (std::vector{-0.129409522f, -0.224143863f, 0.836516321f, -0.482962906f}));
    EXPECT_EQ(FilterSetDenoise.highAnalysis->firstTap, -2);
    EXPECT_EQ(Taps(*FilterSetDenoise.highAnalysis),
              (std::vector{-0.0867483169f, 0.0548369251f, 0.440301716f, -0.816780627f, 0.440301716f, 0.0548369251f,
                           -0.0867483169f}));
    EXPECT_EQ(FilterSetDenoise.highSynthesis->firstTap, -3);
    EXPECT_EQ(Taps(*FilterSetDenoise.highSynthesis),
              (std::vector{-0.0528657697f, -0.0334184729f, 0.0930692628f, 0.386971861f, -0.787513793f, 0.386971861f,
                           0.0930692628f, -0.0334184729f, -0.0528657697f}));
}

TEST(WaveletFilter, OwnsItsTaps) {
    const float source[] = {1.0f, 2.0f, 3.0f};
    const WaveletFilter filter(3, -1, source);
    EXPECT_NE(filter.taps, source);
    WaveletFilter assigned(5, -4, nullptr);
    EXPECT_EQ(Taps(assigned), std::vector<float>(5, 0.0f));
    assigned = filter;
    const WaveletFilter copy(filter);
    for (const WaveletFilter* same : {&copy, static_cast<const WaveletFilter*>(&assigned)}) {
        EXPECT_EQ(same->tapCount, 3);
        EXPECT_EQ(same->firstTap, -1);
        EXPECT_EQ(same->origin, 1);
        EXPECT_EQ(Taps(*same), Taps(filter));
        EXPECT_NE(same->taps, filter.taps);
    }
    const WaveletFilter& itself = assigned;
    assigned = itself;
    EXPECT_EQ(Taps(assigned), Taps(filter));
}

} // namespace
