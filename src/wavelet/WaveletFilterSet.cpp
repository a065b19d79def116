#include "WaveletFilterSet.h"

#include <algorithm>
#include <cstddef>

namespace {

// H[1 - k] = (-1)^(k+1) L[k], in filter indices.
WaveletFilter* DeriveHighPass(const WaveletFilter& low) {
    auto* const high = new WaveletFilter(low.tapCount, 2 - (low.firstTap + low.tapCount), nullptr);
    float sign = low.firstTap % 2 != 0 ? 1.0f : -1.0f;
    for (int i = 0; i < low.tapCount; ++i) {
        high->taps[1 - high->firstTap - (low.firstTap + i)] = sign * low.taps[i];
        sign = -sign;
    }
    return high;
}

} // namespace

WaveletFilter::WaveletFilter(int count, int first, const float* source)
    : tapCount(count), firstTap(first), origin(-first), taps(new float[static_cast<std::size_t>(count)]()) {
    if (source != nullptr) {
        std::copy_n(source, count, taps);
    }
}

WaveletFilter::WaveletFilter(const WaveletFilter& other) : WaveletFilter(other.tapCount, other.firstTap, other.taps) {}

WaveletFilter& WaveletFilter::operator=(const WaveletFilter& other) {
    WaveletFilter copy(other);
    tapCount = copy.tapCount;
    firstTap = copy.firstTap;
    origin = copy.origin;
    std::swap(taps, copy.taps);
    return *this;
}

WaveletFilter::~WaveletFilter() {
    delete[] taps;
}

WaveletFilterSet::WaveletFilterSet(int mirror, const float* analysisTaps, int analysisCount, int analysisFirst,
                                   const float* synthesisTaps, int synthesisCount, int synthesisFirst)
    : mirrorExtension(mirror), lowAnalysis(new WaveletFilter(analysisCount, analysisFirst, analysisTaps)) {
    if (synthesisTaps != nullptr) {
        lowSynthesis = new WaveletFilter(synthesisCount, synthesisFirst, synthesisTaps);
        highAnalysis = DeriveHighPass(*lowSynthesis);
        highSynthesis = DeriveHighPass(*lowAnalysis);
    } else {
        lowSynthesis = new WaveletFilter(*lowAnalysis);
        highAnalysis = DeriveHighPass(*lowAnalysis);
        highSynthesis = new WaveletFilter(*highAnalysis);
    }
}

WaveletFilterSet::~WaveletFilterSet() {
    delete lowAnalysis;
    delete highAnalysis;
    delete lowSynthesis;
    delete highSynthesis;
}
