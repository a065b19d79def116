// The spatial filter, and the split and merge around it, in their plainest form: one pixel at a time, straight from
// the definition. Slow and obviously correct; the library's own code includes nothing of it.
#pragma once

#include <claribox/ChMatrix.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <vector>

namespace reference {

using Plane = std::vector<std::uint8_t>;

/// 16.16 fixed point, truncated toward zero.
inline std::int32_t QuantiseCoefficient(float coefficient) {
    return static_cast<std::int32_t>(static_cast<double>(coefficient) * 65536.0);
}

/// Filters one pixel: the products of coefficients and samples, divided by the sum of the same coefficients, of all
/// kernel positions that lie inside the picture. In the interior these are all positions, so that the divisor is there
/// the sum of the whole kernel. Sums wrap at 32 bits; the quotient truncates toward zero. Most of the tests' time goes
/// by in here, on data that no other thread sees: the thread sanitizer is told to leave it alone.
__attribute__((no_sanitize("thread"))) inline std::int32_t ConvolvePixel(const Plane& source, int width, int height,
                                                                         const std::vector<std::int32_t>& kernel,
                                                                         int rows, int cols, int x, int y) {
    const int left = x - cols / 2;
    const int top = y - rows / 2;
    std::uint32_t products = 0;
    std::uint32_t weights = 0;
    for (int i = std::max(0, -top); i < std::min(rows, height - top); ++i) {
        const std::uint8_t* samples = source.data() + static_cast<std::ptrdiff_t>(top + i) * width;
        const std::int32_t* coefficients = kernel.data() + static_cast<std::ptrdiff_t>(i) * cols;
        for (int j = std::max(0, -left); j < std::min(cols, width - left); ++j) {
            weights += static_cast<std::uint32_t>(coefficients[j]);
            products += static_cast<std::uint32_t>(coefficients[j]) * samples[left + j];
        }
    }
    const auto numerator = static_cast<std::int32_t>(products);
    const auto divisor = static_cast<std::int32_t>(weights);
    if (divisor == 0 || (divisor == -1 && numerator == INT32_MIN)) {
        throw std::domain_error("this kernel has no defined result at some pixel");
    }
    return numerator / divisor;
}

/// Filters a tight plane of `width` by `height` samples.
inline Plane ConvolvePlane(const Plane& source, int width, int height, const ChMatrix<float>& kernel) {
    std::vector<std::int32_t> coefficients(kernel.Count());
    std::transform(kernel.m_Data, kernel.m_Data + kernel.Count(), coefficients.begin(), QuantiseCoefficient);
    Plane result = source;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto at = static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
            const std::int32_t value =
                ConvolvePixel(source, width, height, coefficients, kernel.m_Rows, kernel.m_Cols, x, y);
            result[at] = static_cast<std::uint8_t>(std::clamp(value, 0, 255));
        }
    }
    return result;
}

/// The three planes of packed pixels of `pixelBytes` bytes: first red (byte 2), second green (1), third blue (0).
inline std::array<Plane, 3> Split(const std::uint8_t* pixels, int width, int height, int pixelBytes, int pitch) {
    std::array<Plane, 3> planes;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (int channel = 0; channel < 3; ++channel) {
                planes[static_cast<std::size_t>(2 - channel)].push_back(
                    pixels[static_cast<std::ptrdiff_t>(y) * pitch + x * pixelBytes + channel]);
            }
        }
    }
    return planes;
}

/// The way back. All bytes but the three of each pixel stay as they are.
inline void Merge(const std::array<Plane, 3>& planes, std::uint8_t* pixels, int width, int height, int pixelBytes,
                  int pitch) {
    std::size_t at = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x, ++at) {
            for (int channel = 0; channel < 3; ++channel) {
                pixels[static_cast<std::ptrdiff_t>(y) * pitch + x * pixelBytes + channel] =
                    planes[static_cast<std::size_t>(2 - channel)][at];
            }
        }
    }
}

/// Splits, filters the three planes with the same kernel, and merges.
inline void ConvolvePicture(std::uint8_t* pixels, int width, int height, int pixelBytes, int pitch,
                            const ChMatrix<float>& kernel) {
    std::array<Plane, 3> planes = Split(pixels, width, height, pixelBytes, pitch);
    for (Plane& plane : planes) {
        plane = ConvolvePlane(plane, width, height, kernel);
    }
    Merge(planes, pixels, width, height, pixelBytes, pitch);
}

} // namespace reference
