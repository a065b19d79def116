#include "NoiseLevel.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <numbers>

namespace cli {
namespace {

constexpr int kSide = 16; // of a block
constexpr int kSamples = kSide * kSide;

// Means of blocks beyond which noise of 5 and more is cut off at black or white.
constexpr int kDarkest = 16;
constexpr int kBrightest = 240;

/// Tuned on the twelve photographs that `kRuleFactors` in Denoise.cpp names: with noise of 5 to 10, the lowest tenth of
/// the blocks' means lies a tenth below the noise.
constexpr double kOfLowestTenth = 1.1;

struct Block {
    int response = 0;
    int brightness = 0;
};

/// Of the samples from `first` on, all with neighbours.
Block BlockAt(const unsigned char* first, std::ptrdiff_t width) {
    Block block;
    for (int row = 0; row < kSide; ++row, first += width) {
        for (const unsigned char* at = first; at < first + kSide; ++at) {
            const auto curvature = [&](int column) { return at[column - width] - 2 * at[column] + at[column + width]; };
            block.response += std::abs(curvature(-1) - 2 * curvature(0) + curvature(1));
            block.brightness += *at;
        }
    }
    return block;
}

} // namespace

double NoiseLevel(const std::vector<unsigned char>& plane, int width, int height) {
    std::vector<int> responses;
    std::vector<int> ofMedium;
    for (int top = 1; top + kSide < height; top += kSide) {
        for (int left = 1; left + kSide < width; left += kSide) {
            const Block block = BlockAt(plane.data() + static_cast<std::ptrdiff_t>(top) * width + left, width);
            responses.push_back(block.response);
            if (block.brightness > kDarkest * kSamples && block.brightness < kBrightest * kSamples) {
                ofMedium.push_back(block.response);
            }
        }
    }
    std::vector<int>& counted = ofMedium.empty() ? responses : ofMedium;
    const auto lowestTenth = counted.begin() + static_cast<std::ptrdiff_t>(counted.size() / 10);
    std::ranges::nth_element(counted, lowestTenth);
    // White noise of deviation 1 has a response of deviation 6, and a mean absolute one of 6 * sqrt(2 / pi).
    return kOfLowestTenth * *lowestTenth / kSamples / 6.0 * std::sqrt(std::numbers::pi / 2.0);
}

} // namespace cli
