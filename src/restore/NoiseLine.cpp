#include "restore/NoiseLine.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace restore {
namespace {

// Levels of as many blocks are measured apart, if there are so many, but no more than kMostLevels.
constexpr std::size_t kBlocksOfLevel = 2000;
constexpr std::size_t kMostLevels = 10;

// The share of a level's blocks that counts as its flattest, and the fewest: with 28 coefficients each, forty measure a
// standard deviation to 2 %.
constexpr double kFlattest = 0.01;
constexpr std::size_t kFewest = 40;

struct LevelNoise {
    double level;
    double variance;
    std::vector<const BlockSpectrum*> blocks;
};

/// The median over the coefficients of their mean power, which a texture of few frequencies does not reach.
double VarianceOf(const std::vector<const BlockSpectrum*>& blocks) {
    double powers[28] = {};
    for (const BlockSpectrum* block : blocks) {
        for (int k = 0; k < 28; ++k) {
            powers[k] += static_cast<double>(block->high[k]) * static_cast<double>(block->high[k]);
        }
    }
    std::nth_element(powers, powers + 14, powers + 28);
    return powers[14] / static_cast<double>(blocks.size());
}

LevelNoise MeasureLevel(std::vector<const BlockSpectrum*> blocks) {
    const std::size_t wanted =
        std::max(static_cast<std::size_t>(kFlattest * static_cast<double>(blocks.size())), kFewest);
    const std::size_t count = std::min(wanted, blocks.size());
    std::partial_sort(
        blocks.begin(), blocks.begin() + static_cast<std::ptrdiff_t>(count), blocks.end(),
        [](const auto* a, const auto* b) { return a->lowPower != b->lowPower ? a->lowPower < b->lowPower : a < b; });
    blocks.resize(count);
    double level = 0.0;
    for (const BlockSpectrum* block : blocks) {
        level += static_cast<double>(block->mean) / static_cast<double>(count);
    }
    return {level, VarianceOf(blocks), std::move(blocks)};
}

std::vector<LevelNoise> MeasureLevels(const BlockSpectra& spectra) {
    std::vector<const BlockSpectrum*> blocks;
    for (const BlockSpectrum& block : spectra.Blocks()) {
        blocks.push_back(&block);
    }
    std::sort(blocks.begin(), blocks.end(),
              [](const auto* a, const auto* b) { return a->mean != b->mean ? a->mean < b->mean : a < b; });
    const std::size_t count = std::clamp<std::size_t>(blocks.size() / kBlocksOfLevel, 1, kMostLevels);
    std::vector<LevelNoise> levels;
    for (std::size_t k = 0; k < count; ++k) {
        const auto at = [&](std::size_t part) {
            return blocks.begin() + static_cast<std::ptrdiff_t>(blocks.size() * part / count);
        };
        levels.push_back(MeasureLevel({at(k), at(k + 1)}));
    }
    return levels;
}

/// Least squares of the relative error, neither part below 0.
claribox::ChannelNoise Fit(const std::vector<LevelNoise>& levels, const std::vector<double>& weights) {
    double s = 0, sx = 0, sxx = 0, sy = 0, sxy = 0;
    for (std::size_t k = 0; k < levels.size(); ++k) {
        const double x = levels[k].level;
        const double y = levels[k].variance;
        s += weights[k];
        sx += weights[k] * x;
        sxx += weights[k] * x * x;
        sy += weights[k] * y;
        sxy += weights[k] * x * y;
    }
    const double determinant = s * sxx - sx * sx;
    if (levels.size() > 2 && determinant > 1e-9 * s * sxx) {
        const double slope = (s * sxy - sx * sy) / determinant;
        const double constant = (sy - slope * sx) / s;
        if (slope >= 0 && constant >= 0) {
            return {constant, slope};
        }
        if (slope > 0 && sxx > 0) {
            return {0.0, sxy / sxx};
        }
    }
    return {s > 0 ? sy / s : 0.0, 0.0};
}

} // namespace

NoiseLine::NoiseLine(const BlockSpectra& spectra, double white) {
    const std::vector<LevelNoise> levels = MeasureLevels(spectra);
    std::vector<double> variances;
    for (const LevelNoise& level : levels) {
        variances.push_back(level.variance);
    }
    // Levels with texture are too high: the fit begins low, and those above it count the less the higher they are.
    std::vector<double> sorted = variances;
    std::sort(sorted.begin(), sorted.end());
    const double low = sorted[sorted.size() / 4];
    const double least = 1e-12 * white * white;
    std::vector<double> weights(levels.size());
    m_Noise = {low, 0.0};
    for (int round = 0; round < 10; ++round) {
        for (std::size_t k = 0; k < levels.size(); ++k) {
            const double expected = std::max(m_Noise.Variance(levels[k].level), least);
            const double excess = std::max(variances[k] / expected - 1.0, 0.0) / 0.15;
            weights[k] = 1.0 / (expected * expected) / (1.0 + excess * excess * excess * excess);
        }
        m_Noise = Fit(levels, weights);
    }
    for (std::size_t k = 0; k < levels.size(); ++k) {
        const double expected = std::max(m_Noise.Variance(levels[k].level), least);
        if (std::fabs(variances[k] / expected - 1.0) < 0.2) {
            m_Agreement += 1.0 / static_cast<double>(levels.size());
            m_Blocks.insert(m_Blocks.end(), levels[k].blocks.begin(), levels[k].blocks.end());
        }
    }
}

} // namespace restore
