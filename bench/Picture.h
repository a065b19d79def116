// Pictures to measure on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace bench {

/// Packed 8-bit pixels in the order blue, green, red; rows top first and without padding.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels;

    Picture(int columns, int rows);
    int Pitch() const { return 3 * width; }
    std::size_t PixelCount() const { return static_cast<std::size_t>(width) * static_cast<std::size_t>(height); }
    std::string SizeName() const { return std::to_string(width) + "x" + std::to_string(height); }
};

/// A made picture with what a filter meets in a photograph: slow gradients, hard edges of objects, texture in several
/// sizes and grain. The same size always gives the same picture.
Picture MakePhotograph(int width, int height);

/// Reads a binary PPM of 8 bits a sample. Throws `std::runtime_error` that names the file.
Picture ReadPPM(const std::string& path);

} // namespace bench
