#include "restore/NoiseShape.h"

#include "restore/BlockSpectra.h"
#include "restore/BlockTransform.h"
#include "restore/NoiseScale.h"
#include "restore/PictureAccess.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <numeric>
#include <vector>

namespace restore {
namespace {

constexpr int kSide = 16;
constexpr std::int64_t kMostBlocks = 4000;

/// The flattest of them, by the power at some frequencies, for the measurement of others.
constexpr std::size_t kFlattest = 80;

// Demosaicing and compression take power from the highest frequencies, which texture hardly reaches: noise that has
// more than this share at rings 12 to 15 of what it has at rings 8 to 11 counts as white. Tuned on six photographs of
// scikit-image with white noise of 2 to 50.
constexpr double kShareOfWhite = 0.6;

// Below, such noise has the same power at all frequencies, while texture has ever more: a shape that rises by more than
// this factor from ring 7 to ring 4 is no noise's. Tuned on those photographs, and on four of them through a Bayer
// mosaic and JPEG.
constexpr double kMostSlope = 1.6;
constexpr std::size_t kLowRings = 4;

// Texture is left in the flattest blocks at the lowest frequencies: from ring to ring noise rises by less than this
// factor.
constexpr double kMostRise = 1.1;

// Of a compressed photograph, low frequencies can have so many times the power that is left at the highest.
constexpr double kMostShape = 300.0;

/// The mean power of a block's coefficients (u, v) by max(u, v).
using Rings = std::array<double, kSide>;

Rings RingsOf(const Block<kSide>& coefficients) {
    Rings rings{};
    for (std::size_t v = 0; v < kSide; ++v) {
        for (std::size_t u = 0; u < kSide; ++u) {
            const auto power = static_cast<double>(coefficients[v * kSide + u] * coefficients[v * kSide + u]);
            const std::size_t ring = std::max(u, v);
            rings[ring] += power / static_cast<double>(2 * ring + 1);
        }
    }
    return rings;
}

/// The blocks of luminance and of both opponent colours, on the scale of noise 1.
std::array<std::vector<Rings>, 3> Measure(const claribox::PictureView& picture, const claribox::Noise& noise) {
    const std::size_t colours = static_cast<std::size_t>(Colours(picture));
    std::vector<LevelScale> scales;
    const auto white = static_cast<float>(WhiteLevel(picture.type));
    for (std::size_t k = 0; k < colours; ++k) {
        scales.emplace_back(noise.channels[k], WhiteLevel(picture.type), LeastVariance(picture.type));
    }
    const std::int64_t pixels = std::int64_t{picture.width} * picture.height;
    int step = 8;
    while (pixels / (std::int64_t{step} * step) > kMostBlocks) {
        step += 4;
    }
    const auto width = static_cast<std::size_t>(picture.width);
    std::vector<float> planes[3] = {std::vector<float>(kSide * width), std::vector<float>(kSide * width),
                                    std::vector<float>(kSide * width)};
    std::array<std::vector<Rings>, 3> found;
    std::vector<int> cut;
    std::vector<bool> isAtEnd(kSide * width);
    for (int y = 0; y + kSide <= picture.height; y += step) {
        for (std::size_t r = 0; r < kSide; ++r) {
            float* const rows[3] = {planes[0].data() + r * width, planes[1].data() + r * width,
                                    planes[2].data() + r * width};
            ReadRow(picture, y + static_cast<int>(r), 0, picture.width, rows);
            for (std::size_t x = 0; x < width; ++x) {
                isAtEnd[r * width + x] = false;
                for (std::size_t k = 0; k < colours; ++k) {
                    isAtEnd[r * width + x] = isAtEnd[r * width + x] || rows[k][x] <= 0.0f || rows[k][x] >= white;
                }
            }
            for (std::size_t k = 0; k < colours; ++k) {
                std::transform(rows[k], rows[k] + width, rows[k], [&](float x) { return scales[k].Forward(x); });
            }
            if (colours == 3) {
                ToOpponents(rows[0], rows[1], rows[2], picture.width);
            }
        }
        for (std::size_t x = 0; x + kSide <= width; x += static_cast<std::size_t>(step)) {
            cut.push_back(0);
            for (std::size_t r = 0; r < kSide; ++r) {
                const auto row = isAtEnd.begin() + static_cast<std::ptrdiff_t>(r * width + x);
                cut.back() += static_cast<int>(std::count(row, row + kSide, true));
            }
            for (std::size_t k = 0; k < colours; ++k) {
                Block<kSide> samples;
                for (std::size_t r = 0; r < kSide; ++r) {
                    std::copy_n(planes[k].begin() + static_cast<std::ptrdiff_t>(r * width + x), kSide,
                                samples.begin() + static_cast<std::ptrdiff_t>(r * kSide));
                }
                found[k].push_back(RingsOf(TransformBlock<kSide>(samples)));
            }
        }
    }
    for (std::size_t k = 0; k < colours; ++k) {
        RemoveCut(found[k], cut);
    }
    return found;
}

/// The median power at each ring of the blocks with the least power at rings first .. last.
Rings MedianOfFlattest(std::vector<Rings> blocks, std::size_t first, std::size_t last) {
    const auto power = [&](const Rings& rings) {
        double sum = 0.0;
        for (std::size_t ring = first; ring <= last; ++ring) {
            sum += rings[ring] * static_cast<double>(2 * ring + 1);
        }
        return sum;
    };
    const std::size_t count = std::min(kFlattest, blocks.size());
    const auto end = blocks.begin() + static_cast<std::ptrdiff_t>(count);
    std::partial_sort(blocks.begin(), end, blocks.end(),
                      [&](const Rings& a, const Rings& b) { return power(a) < power(b); });
    Rings median{};
    std::vector<double> powers(count);
    for (std::size_t ring = 0; ring < kSide; ++ring) {
        std::transform(blocks.begin(), end, powers.begin(), [&](const Rings& rings) { return rings[ring]; });
        const auto middle = powers.begin() + static_cast<std::ptrdiff_t>(count / 2);
        std::nth_element(powers.begin(), middle, powers.end());
        median[ring] = *middle;
    }
    return median;
}

/// The noise at each ring; all 1 if it is white.
Rings ShapeOf(const std::vector<Rings>& blocks) {
    Rings shape = MedianOfFlattest(blocks, 1, kLowRings);
    const auto sum = [&](std::ptrdiff_t first) {
        return std::accumulate(shape.begin() + first, shape.begin() + first + 4, 0.0);
    };
    const bool isWhite = sum(12) > kShareOfWhite * sum(8) || shape[kLowRings] > kMostSlope * shape[7];
    if (isWhite) {
        shape.fill(1.0);
        return shape;
    }
    const Rings low = MedianOfFlattest(blocks, kLowRings + 1, 2 * kLowRings);
    for (std::size_t ring = kLowRings + 1; ring-- > 1;) {
        shape[ring] = std::min(low[ring], kMostRise * shape[ring + 1]);
    }
    shape[0] = shape[1];
    for (double& ring : shape) {
        ring = std::clamp(ring, 1e-3, kMostShape);
    }
    return shape;
}

} // namespace

void MeasureShape(const claribox::PictureView& picture, claribox::Noise& noise) {
    const std::array<std::vector<Rings>, 3> blocks = Measure(picture, noise);
    noise.shape[0] = ShapeOf(blocks[0]);
    noise.shape[1] = noise.shape[0];
    if (!blocks[1].empty()) {
        const Rings second = ShapeOf(blocks[1]);
        const Rings third = ShapeOf(blocks[2]);
        for (std::size_t ring = 0; ring < kSide; ++ring) {
            noise.shape[1][ring] = (second[ring] + third[ring]) / 2;
        }
    }
}

} // namespace restore
