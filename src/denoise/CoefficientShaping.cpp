// What happens to the wavelet coefficients between the two halves of the transform, and to the chrominance.
//
// The ranges are cut at halves and eighths of the plane, whether or not those meet the bands of an odd size, and two
// of them overlap: both required, and pinned by CoefficientShapingTest.
#include <claribox/CImageDenoiser.h>

#include "CoefficientShaping.h"
#include "NeighbourMeans.h"
#include "SampleRows.h"

#include <algorithm>
#include <cstddef>

namespace denoise {
namespace {

/// Columns begin .. end - 1 of a row of coefficients; empty where end is not above begin.
struct Span {
    int begin;
    int end;
};

/// The ranges of the operations of the same names in row r of a plane of width W and height H. The corner up to
/// an eighth, rim included, belongs to neither High nor Middle, and the rim not to Low.
struct Ranges {
    int W;
    int H;

    Span All(int) const { return {0, W}; }
    Span High(int r) const { return r >= H / 2 ? Span{0, W} : Span{W / 2, W}; }
    Span Middle(int r) const { return r > H / 8 && r < H / 2 ? Span{0, W} : Span{W / 8 + 1, W / 2}; }
    Span Low(int r) const { return r < H / 8 ? Span{0, W / 8} : Span{0, 0}; }

    // What is removed from the picture when one range is shown alone. For the middle one that is two spans.
    Span AllButFinest(int r) const { return r < H / 2 ? Span{0, W / 2} : Span{0, 0}; }
    Span BelowMiddle(int r) const { return r > H / 8 && r < H / 2 ? Span{0, 0} : Span{0, std::min(W / 8 + 1, W)}; }
    Span AboveMiddle(int r) const { return r > H / 8 && r < H / 2 ? Span{0, 0} : Span{std::max(W / 8 + 1, W / 2), W}; }
    Span AllButCoarsest(int r) const { return r > H / 8 ? Span{0, W} : Span{W / 8 + 1, W}; }
};

/// Calls work(begin, end) with the coefficients of one range, row after row.
template <typename Work>
void ForEachSpan(float* coefficients, const Ranges& ranges, Span (Ranges::*range)(int) const, Work work) {
    for (int r = 0; r < ranges.H; ++r) {
        const Span span = (ranges.*range)(r);
        float* const row = coefficients + static_cast<std::ptrdiff_t>(r) * ranges.W;
        work(row + span.begin, row + std::max(span.begin, span.end));
    }
}

void Shrink(int type, float* begin, float* end, float threshold) {
    if (type >= 0 && type <= 2 && begin < end) {
        ActiveSampleRows().Shrink[type](begin, threshold, end - begin);
    }
}

void ShrinkRange(float* coefficients, const Ranges& ranges, Span (Ranges::*range)(int) const, int type,
                 float threshold) {
    ForEachSpan(coefficients, ranges, range, [&](float* begin, float* end) { Shrink(type, begin, end, threshold); });
}

} // namespace

void ShrinkHighAndMiddle(const ShrinkingRule& rule, int row, int begin, int end, float* values) {
    const Ranges ranges{rule.width, rule.height};
    const auto shrink = [&](const Span& span, float threshold) {
        const int first = std::max(span.begin, begin);
        Shrink(rule.type, values + (first - begin), values + (std::min(span.end, end) - begin), threshold);
    };
    shrink(ranges.High(row), rule.high);
    shrink(ranges.Middle(row), rule.middle);
}

} // namespace denoise

void CImageDenoiser::_coeff_thresholding(float& coefficient, float threshold) {
    denoise::Shrink(m_ThresholdType, &coefficient, &coefficient + 1, threshold);
}

void CImageDenoiser::_filter_all(float* coefficients, float threshold) {
    denoise::ShrinkRange(coefficients, {m_Width, m_Height}, &denoise::Ranges::All, m_ThresholdType, threshold);
}

void CImageDenoiser::_filter_high(float* coefficients, float threshold) {
    denoise::ShrinkRange(coefficients, {m_Width, m_Height}, &denoise::Ranges::High, m_ThresholdType, threshold);
}

void CImageDenoiser::_filter_middle(float* coefficients, float threshold) {
    denoise::ShrinkRange(coefficients, {m_Width, m_Height}, &denoise::Ranges::Middle, m_ThresholdType, threshold);
}

void CImageDenoiser::_filter_low(float* coefficients, float threshold) {
    denoise::ShrinkRange(coefficients, {m_Width, m_Height}, &denoise::Ranges::Low, m_ThresholdType, threshold);
}

void CImageDenoiser::_only_one_band(float* coefficients, int band) {
    using denoise::Ranges;
    const auto clear = [&](denoise::Span (Ranges::*range)(int) const) {
        denoise::ForEachSpan(coefficients, {m_Width, m_Height}, range,
                             [](float* begin, float* end) { std::fill(begin, end, 0.0f); });
    };
    switch (band) {
    case 0:
        clear(&Ranges::AllButFinest);
        break;
    case 1:
        clear(&Ranges::BelowMiddle);
        clear(&Ranges::AboveMiddle);
        break;
    case 2:
        clear(&Ranges::AllButCoarsest);
        break;
    default:
        break;
    }
}

void CImageDenoiser::_smooth_coeff_rect(float* coefficients, int radius, int tolerance, int left, int top, int width,
                                        int height) {
    denoise::SmoothFloats({coefficients, m_Width, m_Height, left, top, width, height}, radius, tolerance);
}

void CImageDenoiser::_smooth_plane(unsigned char* plane, int radius, int tolerance) {
    denoise::SmoothBytes({plane, m_Width, m_Height, 0, 0, m_Width, m_Height}, radius, tolerance);
}
