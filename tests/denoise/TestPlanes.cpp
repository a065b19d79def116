#include "denoise/TestPlanes.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace {

std::uint8_t Sample(double level, int noise, std::mt19937& generator) {
    const int offset = static_cast<int>(generator() % static_cast<unsigned>(2 * noise + 1)) - noise;
    return static_cast<std::uint8_t>(std::clamp(static_cast<int>(level) + offset, 0, 255));
}

} // namespace

std::vector<std::uint8_t> NoisyPlane(int width, int height, int level, int noise, std::uint32_t seed) {
    std::mt19937 generator(seed);
    std::vector<std::uint8_t> plane;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            plane.push_back(Sample(level + 60 * std::sin(x / 17.0) * std::cos(y / 23.0), noise, generator));
        }
    }
    return plane;
}

void PutPatch(std::vector<std::uint8_t>& plane, int width, int left, int top, int size, int level, int noise) {
    std::mt19937 generator(1);
    for (int y = top; y < top + size; ++y) {
        for (int x = left; x < left + size; ++x) {
            plane[static_cast<std::size_t>(y * width + x)] = Sample(level, noise, generator);
        }
    }
}

CImageDenoiser DenoiserOf(int width, int height) {
    CImageDenoiser denoiser;
    denoiser.SetSize(width, height);
    return denoiser;
}
