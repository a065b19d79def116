#include "WaveletTransform.h"

#include "LineFilters.h"

#include <algorithm>

namespace {

using wavelet::LineEnds;
using wavelet::Pass;

bool IsOdd(int n) {
    return n % 2 != 0;
}

// Symmetric filters of odd length keep a line mirrored about its end samples, those of even length about the gaps
// behind them; the bands inherit a symmetry of their own at either end (C. M. Brislawn, 1996).
LineEnds EndsOf(const WaveletFilter& lowAnalysis, int size, int extension) {
    const bool oddTaps = IsOdd(lowAnalysis.tapCount);
    const int kind = oddTaps ? 1 : 2;
    return {extension != 0,
            {kind, kind, 1},
            {kind, IsOdd(size) ? 1 : 2, 1},
            {2, IsOdd(size) != oddTaps ? 1 : 2, oddTaps ? 1 : -1}};
}

Pass ForwardPass(const WaveletTransform& transform, int size, int extension) {
    return {Pass::Direction::Forward, wavelet::ForwardTerms(*transform.lowAnalysis, *transform.highAnalysis), size,
            transform.margin, EndsOf(*transform.lowAnalysis, size, extension)};
}

Pass InversePass(const WaveletTransform& transform, int size, int extension) {
    return {Pass::Direction::Inverse, wavelet::InverseTerms(*transform.lowSynthesis, *transform.highSynthesis), size,
            transform.margin, EndsOf(*transform.lowAnalysis, size, extension)};
}

void FilterRows(const Pass& pass, const float* source, float* out, std::ptrdiff_t stride, int count) {
    wavelet::RowFilter filter(pass);
    for (int y = 0; y < count; ++y) {
        filter.Filter(source + y * stride, out + y * stride);
    }
}

void FilterColumns(const Pass& pass, const float* source, float* out, std::ptrdiff_t stride, int count) {
    wavelet::ColumnFilter(pass, count).Filter(source, out, stride);
}

void CopyPlane(const float* input, float* output, int width, int height) {
    std::copy_n(input, static_cast<std::size_t>(width) * static_cast<std::size_t>(height), output);
}

} // namespace

WaveletTransform::WaveletTransform(const WaveletFilterSet& set)
    : lowAnalysis(set.lowAnalysis), highAnalysis(set.highAnalysis), lowSynthesis(set.lowSynthesis),
      highSynthesis(set.highSynthesis), mirrorExtension(set.mirrorExtension),
      margin(std::max(set.lowAnalysis->tapCount, set.highAnalysis->tapCount)) {}

void WaveletTransform::Forward2D(const float* input, float* output, int width, int height, int levels,
                                 int extension) const {
    extension = extension == -1 ? mirrorExtension : extension;
    if (levels <= 0) {
        CopyPlane(input, output, width, height);
    }
    const float* source = input;
    int columns = width;
    int rows = height;
    for (int level = 0; level < levels; ++level) {
        if ((columns <= 2 || rows <= 2) && extension == 1) {
            ReportWarning("Reduce # of transform steps or increase signal size");
            ReportWarning("  or switch to periodic extension");
            ReportError("Low pass subband is too small");
        }
        FilterRows(ForwardPass(*this, columns, extension), source, output, width, rows);
        FilterColumns(ForwardPass(*this, rows, extension), output, output, width, columns);
        source = output;
        columns = (columns + 1) / 2;
        rows = (rows + 1) / 2;
    }
}

void WaveletTransform::Inverse2D(const float* input, float* output, int width, int height, int levels,
                                 int extension) const {
    extension = extension == -1 ? mirrorExtension : extension;
    CopyPlane(input, output, width, height);
    for (int level = levels - 1; level >= 0; --level) {
        int columns = width;
        int rows = height;
        for (int k = 0; k < level; ++k) {
            columns = (columns + 1) / 2;
            rows = (rows + 1) / 2;
        }
        FilterColumns(InversePass(*this, rows, extension), output, output, width, columns);
        FilterRows(InversePass(*this, columns, extension), output, output, width, rows);
    }
}

void WaveletTransform::ForwardLine(float* in, float* out, int size, int extension) const {
    wavelet::RowFilter(ForwardPass(*this, size, extension)).FilterBuffer(in, out + margin);
}

void WaveletTransform::InverseLine(const float* in, float* out, int size, int extension) const {
    wavelet::RowFilter(InversePass(*this, size, extension)).Filter(in + margin, out + margin);
}

void WaveletTransform::ExtendMirror(float* buffer, int size, int leftKind, int rightKind, int sign) const {
    wavelet::ExtendMirrored(buffer, size, margin, {leftKind, rightKind, sign});
}

void WaveletTransform::ExtendPeriodic(float* buffer, int size) const {
    wavelet::ExtendRepeated(buffer, size, margin);
}
