#include "BlurLimit.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace cli {
namespace {

constexpr double kOne = 65536.0; // the library's weights have 16 fractional bits
constexpr double kLimit = 2147483648.0;
constexpr double kLargestSample = 255.0;

/// Derived: more than single precision, at 2^-24 an operation, can lose in two passes of this many products and sums.
/// BadInputTest.cpp holds the decision against sums in 64 bits.
constexpr int kMostProducts = 2 * kLargestBlurRadius + 1;
constexpr double kRounding = 3e-5;
static_assert(kRounding > 4.0 * kMostProducts * 0x1p-24);

/// The library's Gaussian along one axis; it is separable except that its weights are truncated to 16 fractional bits.
std::vector<float> GaussianWeights(int radius) {
    std::vector<float> weights;
    for (int d = -radius; d <= radius; ++d) {
        const double ratio = d / (2.0 * radius);
        weights.push_back(static_cast<float>(std::exp2(-ratio * ratio)));
    }
    return weights;
}

double SumOf(const std::vector<float>& weights) {
    double sum = 0.0;
    for (const float weight : weights) {
        sum += static_cast<double>(weight);
    }
    return sum;
}

const unsigned char* RowOf(const PackedPixels& pixels, int y) {
    return pixels.data + static_cast<std::ptrdiff_t>(y) * pixels.pitch;
}

/// The sums with untruncated weights, row after row, for all channels as they are interleaved.
class UntruncatedSums {
public:
    UntruncatedSums(const PackedPixels& pixels, int radius)
        : m_Pixels(pixels), m_Radius(radius), m_Count(static_cast<std::size_t>(pixels.width * BytesPerPixel(pixels))),
          m_Margin(static_cast<std::size_t>(radius * BytesPerPixel(pixels))), m_Weights(GaussianWeights(radius)),
          m_Column(m_Count + 2 * m_Margin), m_Sums(m_Count) {}

    const std::vector<float>& Row(int y) {
        std::ranges::fill(m_Column, 0.0f);
        for (int row = std::max(0, y - m_Radius); row <= std::min(m_Pixels.height - 1, y + m_Radius); ++row) {
            const float weight = m_Weights[static_cast<std::size_t>(row - y + m_Radius)];
            const unsigned char* const samples = RowOf(m_Pixels, row);
            float* const column = m_Column.data() + m_Margin; // beside it samples are zero
            for (std::size_t k = 0; k < m_Count; ++k) {
                column[k] += weight * static_cast<float>(samples[k]);
            }
        }
        std::ranges::fill(m_Sums, 0.0f);
        for (std::size_t j = 0; j < m_Weights.size(); ++j) {
            const float weight = m_Weights[j] * static_cast<float>(kOne);
            const float* const column = m_Column.data() + j * (m_Margin / static_cast<std::size_t>(m_Radius));
            for (std::size_t k = 0; k < m_Count; ++k) {
                m_Sums[k] += weight * column[k];
            }
        }
        return m_Sums;
    }

private:
    const PackedPixels& m_Pixels;
    int m_Radius;
    std::size_t m_Count;  // samples of a row
    std::size_t m_Margin; // samples of a radius
    std::vector<float> m_Weights;
    std::vector<float> m_Column;
    std::vector<float> m_Sums;
};

/// Calls judge(sum, y, k) with the untruncated sum at each sample but alpha, k being its place in row y, until one call
/// returns true; returns whether one did.
template <typename Judge>
bool AnySum(const PackedPixels& pixels, int radius, Judge judge) {
    UntruncatedSums sums(pixels, radius);
    const auto bytes = static_cast<std::size_t>(BytesPerPixel(pixels));
    for (int y = 0; y < pixels.height; ++y) {
        const std::vector<float>& row = sums.Row(y);
        for (std::size_t k = 0; k < row.size(); ++k) {
            if (k % bytes < 3 && judge(static_cast<double>(row[k]), y, k)) {
                return true;
            }
        }
    }
    return false;
}

} // namespace

bool BlurWraps(const PackedPixels& pixels, int radius) {
    const double side = 2.0 * radius + 1.0;
    const double weights = kOne * SumOf(GaussianWeights(radius)) * SumOf(GaussianWeights(radius));
    int brightest = 0;
    ForEachPixel(pixels, [&](int b, int g, int r, std::size_t) { brightest = std::max({brightest, b, g, r}); });
    const double low = kLimit * (1.0 - kRounding);
    if (brightest * weights < low) {
        return false;
    }
    // Truncation takes less than 1 from each weight and never adds anything.
    const double high = kLimit * (1.0 + kRounding) + side * side * kLargestSample;
    bool close = false;
    if (AnySum(pixels, radius, [&](double sum, int, std::size_t) {
            close = close || sum >= low;
            return sum > high;
        })) {
        return true;
    }
    if (!close) {
        return false;
    }
    // A sum between the two bounds that wraps is negative, and its quotient 0; any other has a quotient of at least 3.
    std::vector<unsigned char> copy(CountOf(pixels) * static_cast<std::size_t>(BytesPerPixel(pixels)));
    const PackedPixels blurred = {copy.data(), pixels.width, pixels.height, pixels.format,
                                  pixels.width * BytesPerPixel(pixels)};
    for (int y = 0; y < pixels.height; ++y) {
        std::copy_n(RowOf(pixels, y), blurred.pitch, copy.data() + static_cast<std::ptrdiff_t>(y) * blurred.pitch);
    }
    CImageFocus focus;
    focus.SetSize(pixels.width, pixels.height);
    focus.SetRadius(radius);
    focus.Blur(blurred.data, blurred.format, blurred.pitch);
    return AnySum(pixels, radius,
                  [&](double sum, int y, std::size_t k) { return sum >= low && RowOf(blurred, y)[k] == 0; });
}

// A wider Gaussian weighs more at every distance, so that a picture that wraps at one radius does at all larger ones.
int LargestUnwrappedRadius(const PackedPixels& pixels, int radius) {
    int safe = std::min(radius, FoMaxSafeBlurRadius);
    int wrapping = radius + 1;
    while (wrapping - safe > 1) {
        const int middle = (safe + wrapping) / 2;
        (BlurWraps(pixels, middle) ? wrapping : safe) = middle;
    }
    return safe;
}

double WrappingMean(int radius) {
    return kLimit / (kOne * SumOf(GaussianWeights(radius)) * SumOf(GaussianWeights(radius)));
}

} // namespace cli
