#include "Picture.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <stdexcept>

namespace bench {
namespace {

// A well-mixed number of a lattice point, 0 up to 1. Multipliers: the finalizer of MurmurHash3.
float LatticeValue(std::uint32_t x, std::uint32_t y, std::uint32_t layer) {
    std::uint32_t h = x * 0x9e3779b1u ^ y * 0x85ebca77u ^ layer * 0xc2b2ae3du;
    h = (h ^ h >> 16) * 0x85ebca6bu;
    h = (h ^ h >> 13) * 0xc2b2ae35u;
    return static_cast<float>((h ^ h >> 16) >> 8) * 0x1p-24f;
}

// Value noise with cells of 2^shift pixels, bilinear between lattice points.
float Noise(int x, int y, int shift, std::uint32_t layer) {
    const auto cellX = static_cast<std::uint32_t>(x) >> shift;
    const auto cellY = static_cast<std::uint32_t>(y) >> shift;
    const float scale = 1.0f / static_cast<float>(1 << shift);
    const float fx = static_cast<float>(x) * scale - static_cast<float>(cellX);
    const float fy = static_cast<float>(y) * scale - static_cast<float>(cellY);
    const float top = std::lerp(LatticeValue(cellX, cellY, layer), LatticeValue(cellX + 1, cellY, layer), fx);
    const float bottom =
        std::lerp(LatticeValue(cellX, cellY + 1, layer), LatticeValue(cellX + 1, cellY + 1, layer), fx);
    return std::lerp(top, bottom, fy);
}

struct Object {
    float x, y, reach;
    bool round;
    float colour[3];
};

std::vector<Object> ScatterObjects(int width, int height) {
    constexpr std::uint32_t kObjects = 48;
    std::vector<Object> objects;
    for (std::uint32_t k = 0; k < kObjects; ++k) {
        const auto random = [k](std::uint32_t column) { return LatticeValue(column, k, 7); };
        const float reach = (0.01f + 0.09f * random(2) * random(2)) * static_cast<float>(width);
        objects.push_back({random(0) * static_cast<float>(width),
                           random(1) * static_cast<float>(height),
                           reach,
                           k % 2 == 0,
                           {160.0f * random(3) - 80.0f, 160.0f * random(4) - 80.0f, 160.0f * random(5) - 80.0f}});
    }
    return objects;
}

bool Covers(const Object& object, float x, float y) {
    const float dx = std::abs(x - object.x);
    const float dy = std::abs(y - object.y);
    return object.round ? dx * dx + dy * dy < object.reach * object.reach : std::max(dx, dy) < object.reach;
}

} // namespace

Picture::Picture(int columns, int rows) : width(columns), height(rows), pixels(3 * PixelCount()) {}

Picture MakePhotograph(int width, int height) {
    Picture picture(width, height);
    const std::vector<Object> objects = ScatterObjects(width, height);
    std::size_t at = 0;
    for (int y = 0; y < height; ++y) {
        const float v = static_cast<float>(y) / static_cast<float>(height);
        for (int x = 0; x < width; ++x) {
            const float u = static_cast<float>(x) / static_cast<float>(width);
            const float texture = 40.0f * Noise(x, y, 6, 1) + 30.0f * Noise(x, y, 4, 2) + 20.0f * Noise(x, y, 2, 3) +
                                  10.0f * Noise(x, y, 0, 4) - 50.0f;
            float colour[3] = {190.0f - 120.0f * v, 110.0f + 60.0f * std::sin(3.0f * u + 2.0f * v), 70.0f + 120.0f * v};
            for (const Object& object : objects) {
                if (Covers(object, static_cast<float>(x), static_cast<float>(y))) {
                    for (int c = 0; c < 3; ++c) {
                        colour[c] += object.colour[c];
                    }
                }
            }
            for (const float sample : colour) {
                picture.pixels[at++] = static_cast<std::uint8_t>(std::clamp(sample + texture, 0.0f, 255.0f));
            }
        }
    }
    return picture;
}

Picture ReadPPM(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string magic;
    int numbers[3] = {}; // width, height, largest sample
    file >> magic;
    for (int& number : numbers) {
        while ((file >> std::ws).peek() == '#') {
            file.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
        }
        file >> number;
    }
    file.get(); // the one blank before the samples
    const auto [width, height, largest] = numbers;
    if (!file || magic != "P6" || width < 1 || height < 1 || largest != 255) {
        throw std::runtime_error(path + ": not a binary PPM of 8 bits a sample");
    }
    Picture picture(width, height);
    file.read(reinterpret_cast<char*>(picture.pixels.data()), static_cast<std::streamsize>(picture.pixels.size()));
    if (!file) {
        throw std::runtime_error(path + ": ends before its last pixel");
    }
    for (std::size_t k = 0; k < picture.pixels.size(); k += 3) {
        std::swap(picture.pixels[k], picture.pixels[k + 2]);
    }
    return picture;
}

} // namespace bench
