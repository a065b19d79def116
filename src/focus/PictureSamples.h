// The samples of a picture as the spatial filter sees them: rows of bytes in the host's memory, some apart.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace focus {

/// Samples of one kind or three kinds: a byte plane, the pixels of a picture, or one colour of these. The samples of
/// a kind lie `Step()` bytes apart within what Load() returns, and `pixelBytes` apart in the picture.
struct PictureSamples {
    std::uint8_t* top; ///< the first sample of the first row
    std::ptrdiff_t pitch;
    int width; ///< in pixels, 1 or more, as is the height
    int height;
    int pixelBytes; ///< 1, 3 or 4
    int kinds;      ///< samples of a pixel, 1 or 3; those behind them are neither read nor written by Store()

    int Step() const { return kinds; }

    /// Samples of a row.
    int Count() const { return width * kinds; }

    std::uint8_t* Row(int y) const { return top + y * pitch; }

    /// Whether the samples of a row follow each other in memory.
    bool IsDense() const { return pixelBytes == kinds; }

    /// Copies the samples of row y.
    void Load(int y, std::uint8_t* samples) const {
        const std::uint8_t* pixels = Row(y);
        if (IsDense()) {
            std::memcpy(samples, pixels, static_cast<std::size_t>(Count()));
        } else if (kinds == 1) {
            pixelBytes == 3 ? LoadEvery<3>(pixels, samples) : LoadEvery<4>(pixels, samples);
        } else { // four bytes at a time: the next pixel overwrites the fourth
            for (int x = 0; x < width - 1; ++x) {
                std::memcpy(samples + 3 * x, pixels + 4 * x, 4);
            }
            std::memcpy(samples + 3 * (width - 1), pixels + 4 * (width - 1), 3);
        }
    }

    /// Writes `count` samples, a multiple of the kinds, from sample `first` of row y on, likewise a multiple.
    void Store(const std::uint8_t* samples, int y, int first, int count) const {
        std::uint8_t* pixels = Row(y) + static_cast<std::ptrdiff_t>(first / kinds) * pixelBytes;
        if (kinds == 3) {
            for (int x = 0; x < count; x += 3, pixels += pixelBytes) {
                std::memcpy(pixels, samples + x, 2);
                pixels[2] = samples[x + 2];
            }
        } else {
            for (int x = 0; x < count; ++x) {
                pixels[x * pixelBytes] = samples[x];
            }
        }
    }

private:
    template <int bytes>
    void LoadEvery(const std::uint8_t* __restrict pixels, std::uint8_t* __restrict samples) const {
        for (int x = 0; x < width; ++x) {
            samples[x] = pixels[bytes * x];
        }
    }
};

} // namespace focus
