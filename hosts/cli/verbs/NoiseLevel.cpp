#include "NoiseLevel.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <numbers>

namespace cli {
namespace {

constexpr int Side = 16; // of a block
constexpr int Samples = Side * Side;

// Means of blocks beyond which noise of 5 and more is cut off at black or white.
constexpr int Darkest = 16;
constexpr int Brightest = 240;

/// Tuned on the twelve photographs that `RuleFactors` in Denoise.cpp names: with noise of 5 to 10, the lowest tenth of
/// the blocks' means lies a tenth below the noise.
constexpr double OfLowestTenth = 1.1;

struct Block {
    int response = 0;
    int brightness = 0;
};

/// Of the samples from `first` on, all with neighbours.
Block BlockAt(const unsigned char* first, std::ptrdiff_t width) {
    Block block;
    for (int row = 0; row < Side; ++row, first += width) {
        for (const unsigned char* at = first; at < first + Side; ++at) {
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
    for (int top = 1; top + Side < height; top += Side) {
        for (int left = 1; left + Side < width; left += Side) {
            const Block block = BlockAt(plane.data() + static_cast<std::ptrdiff_t>(top) * width + left, width);
            responses.push_back(block.response);
            if (block.brightness > Darkest * Samples && block.brightness < Brightest * Samples) {
                ofMedium.push_back(block.response);
            }
        }
    }
    std::vector<int>& counted = ofMedium.empty() ? responses : ofMedium;
    const auto lowestTenth = counted.begin() + static_cast<std::ptrdiff_t>(counted.size() / 10);
    std::ranges::nth_element(counted, lowestTenth);
    // White noise of deviation 1 has a response of deviation 6, and a mean absolute one of 6 * sqrt(2 / pi).
    return OfLowestTenth * *lowestTenth / Samples / 6.0 * std::sqrt(std::numbers::pi / 2.0);
}

} // namespace cli
