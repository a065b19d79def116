#include "NoiseEstimate.h"

#include <claribox/CImageDenoiser.h>

#include "Constants.h"
#include "wavelet/WaveletTransform.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace denoise {
namespace {

// All given: results depend on each. ProbeRegion pins those of the search, NoiseEstimateTest those of the measurement.
constexpr int kBlock = 8;                        // side in pixels of a block of statistics
constexpr int kSquareBlocks = kEstSide / kBlock; // side of a candidate square in blocks
constexpr double kBlocks = kSquareBlocks * kSquareBlocks;
constexpr double kDarkest = 50.0;     // the mean of a square must be above this
constexpr double kBrightest = 200.0;  // and not above this
constexpr int kLevels = 3;            // of the transform; the sum takes the two finest, so that 2 would give the same
constexpr int kCoarse = kEstSide / 4; // side of the corner that holds the third level
constexpr double kDetails = kEstSide * kEstSide - kCoarse * kCoarse;
constexpr float kMedianOfNormal = 0.6745f; // scales a mean as it would a median of absolute values (Donoho, 1995)

struct Statistics {
    double variance;
    double mean;
    double meanSquared;

    Statistics& operator+=(const Statistics& other) {
        variance += other.variance;
        mean += other.mean;
        meanSquared += other.meanSquared;
        return *this;
    }
    Statistics& operator-=(const Statistics& other) {
        variance -= other.variance;
        mean -= other.mean;
        meanSquared -= other.meanSquared;
        return *this;
    }
};

Statistics OfBlock(const unsigned char* pixels, int stride) {
    int sum = 0;
    int squares = 0;
    for (int y = 0; y < kBlock; ++y, pixels += stride) {
        for (int x = 0; x < kBlock; ++x) {
            sum += pixels[x];
            squares += pixels[x] * pixels[x];
        }
    }
    const double mean = sum * 0.015625;
    return {squares * 0.015625 - mean * mean, mean, mean * mean};
}

} // namespace

// The score of a square tells how rough and uneven it is: the plain sum of its blocks' variances, and the variance of
// their means. Sums over the squares slide down and along the blocks. That is exact: every block value is a whole
// multiple of 2^-12 below 2^17, so that sums and differences in double never round.
SquareCorner FlattestSquare(const unsigned char* plane, int width, int height, SquareCorner otherwise) {
    const int columns = width / kBlock;
    const int rows = height / kBlock;
    // Neither the last row nor the last column of squares is tried. Required; ProbeRegion pins it.
    if (rows <= kSquareBlocks || columns <= kSquareBlocks) {
        return otherwise;
    }
    const auto blocksInRow = static_cast<std::size_t>(columns);
    std::vector<Statistics> blocks(kSquareBlocks * blocksInRow); // the rows of blocks that a row of squares covers
    std::vector<Statistics> columnSums(blocksInRow);
    SquareCorner flattest = otherwise;
    double best = std::numeric_limits<double>::max();
    for (int row = 0; row < rows - 1; ++row) {
        for (std::size_t column = 0; column < blocksInRow; ++column) {
            Statistics& block = blocks[static_cast<std::size_t>(row % kSquareBlocks) * blocksInRow + column];
            columnSums[column] -= block;
            block = OfBlock(plane + static_cast<std::ptrdiff_t>(row) * kBlock * width + column * kBlock, width);
            columnSums[column] += block;
        }
        const int top = row - kSquareBlocks + 1;
        Statistics square = {};
        for (int column = 0; column < columns - 1 && top >= 0; ++column) {
            square += columnSums[static_cast<std::size_t>(column)];
            const int left = column - kSquareBlocks + 1;
            if (left < 0) {
                continue;
            }
            const double mean = square.mean / kBlocks;
            const double score = square.variance + (square.meanSquared / kBlocks - mean * mean);
            if (score < best && mean > kDarkest && !(mean > kBrightest)) {
                best = score;
                flattest = {left * kBlock, top * kBlock};
            }
            square -= columnSums[static_cast<std::size_t>(left)];
        }
    }
    return flattest;
}

bool EndsInside(int width, int height, SquareCorner square) {
    const std::int64_t stride = width;
    return (square.top + kEstSide - 1) * stride + square.left + kEstSide <= stride * height;
}

// The mean absolute detail of the two finest levels. The sum is a float, rounded at each step: required,
// and pinned by NoiseEstimateTest.
float NoiseIn(const unsigned char* plane, int width, SquareCorner square) {
    std::vector<float> samples(kEstSide * kEstSide);
    std::vector<float> coefficients(kEstSide * kEstSide);
    for (int r = 0; r < kEstSide; ++r) {
        const unsigned char* const row = plane + static_cast<std::ptrdiff_t>(square.top + r) * width + square.left;
        for (int c = 0; c < kEstSide; ++c) {
            samples[static_cast<std::size_t>(r * kEstSide + c)] = row[c];
        }
    }
    WaveletTransform(FilterSetDenoise).Forward2D(samples.data(), coefficients.data(), kEstSide, kEstSide, kLevels, -1);
    volatile float sum = 0.0f; // a store rounds, where x87 registers would keep more
    for (int r = 0; r < kEstSide; ++r) {
        for (int c = r < kCoarse ? kCoarse : 0; c < kEstSide; ++c) {
            sum = sum + std::fabs(coefficients[static_cast<std::size_t>(r * kEstSide + c)]);
        }
    }
    return static_cast<float>(static_cast<double>(sum) / kDetails / static_cast<double>(kMedianOfNormal));
}

} // namespace denoise

void CImageDenoiser::_probe_region(unsigned char* plane) {
    const denoise::SquareCorner square = denoise::FlattestSquare(plane, m_Width, m_Height, {m_EstLeft, m_EstTop});
    m_EstLeft = square.left;
    m_EstTop = square.top;
}

float CImageDenoiser::_estimate_noise(unsigned char* plane) {
    return denoise::NoiseIn(plane, m_Width, {m_EstLeft, m_EstTop});
}
