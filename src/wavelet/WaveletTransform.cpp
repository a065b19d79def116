#include "WaveletTransform.h"

#include "LevelStreams.h"

#include <algorithm>
#include <cstddef>

WaveletTransform::WaveletTransform(const WaveletFilterSet& set)
    : lowAnalysis(set.lowAnalysis), highAnalysis(set.highAnalysis), lowSynthesis(set.lowSynthesis),
      highSynthesis(set.highSynthesis), mirrorExtension(set.mirrorExtension),
      margin(std::max(set.lowAnalysis->tapCount, set.highAnalysis->tapCount)) {}

void WaveletTransform::Forward2D(const float* input, float* output, int width, int height, int levels,
                                 int extension) const {
    wavelet::ForwardStream stream(*this, output, width, height, levels, extension);
    for (int y = 0; y < height; ++y) {
        std::copy_n(input + static_cast<std::ptrdiff_t>(y) * width, width, stream.NextRow());
        stream.Take();
    }
}

void WaveletTransform::Inverse2D(const float* input, float* output, int width, int height, int levels,
                                 int extension) const {
    wavelet::InverseStream stream(*this, input, width, height, levels, extension, nullptr);
    for (int y = 0; y < height; ++y) {
        stream.NextRow(output + static_cast<std::ptrdiff_t>(y) * width);
    }
}

void WaveletTransform::ForwardLine(float* in, float* out, int size, int extension) const {
    wavelet::RowFilter(wavelet::ForwardPass(*this, size, extension)).FilterBuffer(in, out + margin);
}

void WaveletTransform::InverseLine(const float* in, float* out, int size, int extension) const {
    wavelet::RowFilter filter(wavelet::InversePass(*this, size, extension));
    const int low = (size + 1) / 2;
    std::copy_n(in + margin, low, filter.Band(0));
    std::copy_n(in + margin + low, size - low, filter.Band(1));
    filter.FilterBands(out + margin);
}

void WaveletTransform::ExtendMirror(float* buffer, int size, int leftKind, int rightKind, int sign) const {
    wavelet::ExtendMirrored(buffer, size, margin, {leftKind, rightKind, sign});
}

void WaveletTransform::ExtendPeriodic(float* buffer, int size) const {
    wavelet::ExtendRepeated(buffer, size, margin);
}
