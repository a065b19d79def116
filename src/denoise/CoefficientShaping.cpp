// What happens to the wavelet coefficients between the two halves of the transform, and to the chrominance.
//
// The ranges are cut at halves and eighths of the plane, whether or not those meet the bands of an odd size, and two
// of them overlap: both required, and pinned by CoefficientShapingTest.
#include <claribox/CImageDenoiser.h>

#include "NeighbourMeans.h"

#include <algorithm>
#include <cmath>
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

// Shrinkage rules (D. L. Donoho, 1995; H.-Y. Gao, 1998, for the garrote). What is below the threshold becomes 0; for
// the rest the rule is rounded to float once, for which the soft rule needs no wider type.
struct Soft {
    static float Shrink(float x, float a, float t) {
        const float sign = x > 0.0f ? 1.0f : x < 0.0f ? -1.0f : 0.0f;
        return sign * (a - t);
    }
};
struct Hard {
    static float Shrink(float x, float, float) { return x; }
};
struct Garrote {
    static float Shrink(float x, float a, float t) {
        const double wide = static_cast<double>(a);
        const double threshold = static_cast<double>(t);
        return static_cast<float>(static_cast<double>(x) * (1.0 - threshold * threshold / (wide * wide)));
    }
};

template <typename Rule>
void ShrinkSpan(float* begin, float* end, float threshold) {
    for (float* at = begin; at < end; ++at) {
        const float magnitude = std::fabs(*at);
        *at = magnitude < threshold ? 0.0f : Rule::Shrink(*at, magnitude, threshold);
    }
}

void Shrink(int type, float* begin, float* end, float threshold) {
    switch (type) {
    case 0:
        return ShrinkSpan<Soft>(begin, end, threshold);
    case 1:
        return ShrinkSpan<Hard>(begin, end, threshold);
    case 2:
        return ShrinkSpan<Garrote>(begin, end, threshold);
    default:
        return;
    }
}

void ShrinkRange(float* coefficients, const Ranges& ranges, Span (Ranges::*range)(int) const, int type,
                 float threshold) {
    ForEachSpan(coefficients, ranges, range, [&](float* begin, float* end) { Shrink(type, begin, end, threshold); });
}

} // namespace
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
