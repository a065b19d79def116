// The filters: given numbers by checksum, derived ones by their mathematics.
#include "wavelet/FilterSets.h"
#include "wavelet/WaveletTransform.h"

#include <gtest/gtest.h>

#include <cstring>
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
        EXPECT_EQ(Checksum(set), row.checksum);
        const WaveletTransform transform(set);
        EXPECT_EQ(transform.margin, row.margin);
        EXPECT_EQ(transform.mirrorExtension, row.mirror);
        const struct {
            const WaveletFilter& low;
            const FilterShape& shape;
            const WaveletFilter& high; // mirrors the low-pass filter of the other direction
        } pairs[] = {{*transform.lowSynthesis, row.synthesis, *transform.highAnalysis},
                     {*transform.lowAnalysis, row.analysis, *transform.highSynthesis}};
        for (const auto& [low, shape, high] : pairs) {
            EXPECT_EQ(low.tapCount, shape.count);
            EXPECT_EQ(low.firstTap, shape.first);
            EXPECT_EQ(low.origin, -low.firstTap);
            EXPECT_EQ(high.tapCount, low.tapCount);
            EXPECT_EQ(high.origin, -high.firstTap);
            for (int k = -20; k <= 20; ++k) {
                EXPECT_EQ(At(high, 1 - k), (k % 2 != 0 ? 1.0f : -1.0f) * At(low, k)) << "at " << k;
            }
        }
    }
    EXPECT_EQ(FilterSetDaub4.highAnalysis->firstTap, -2);
    EXPECT_EQ(Taps(*FilterSetDaub4.highAnalysis),
              (std::vector{-0.129409522f, -0.224143863f, 0.836516321f, -0.482962906f}));
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
