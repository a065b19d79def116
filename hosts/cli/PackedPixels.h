// A picture as the library takes it, and the one place where libvips' samples become that and come back from it.
#pragma once

#include <claribox/CImageFocus.h>

#include <cstddef>
#include <vector>

namespace cli {

/// `height` rows of `width` pixels, `pitch` bytes from row to row. Each pixel is blue, green, red and, with
/// `FoPixelFmt_BGRX32`, alpha, which no operation touches.
struct PackedPixels {
    unsigned char* data;
    int width;
    int height;
    FoPixelFmt format;
    int pitch;
};

/// Tightly packed samples of libvips with 1 to 4 bands: grey, or red, green and blue, either with alpha behind.
struct VipsSamples {
    unsigned char* data;
    int width;
    int height;
    int bands;
};

/// Packs `samples` for the library: colour in place, grey spread over the three channels in `spread`, which has to
/// live as long as the result is used.
PackedPixels Pack(const VipsSamples& samples, std::vector<unsigned char>& spread);

/// The reverse of `Pack`, after an operation. Grey is taken from one of its three channels, which operations treat
/// alike.
void Unpack(const PackedPixels& pixels, const VipsSamples& samples);

inline int BytesPerPixel(const PackedPixels& pixels) {
    return pixels.format == FoPixelFmt_BGR24 ? 3 : 4;
}

inline std::size_t CountOf(const PackedPixels& pixels) {
    return static_cast<std::size_t>(pixels.width) * static_cast<std::size_t>(pixels.height);
}

/// Calls work(blue, green, red, index) for each pixel, row after row.
template <typename Work>
void ForEachPixel(const PackedPixels& pixels, Work work) {
    const int bytes = BytesPerPixel(pixels);
    std::size_t index = 0;
    for (int row = 0; row < pixels.height; ++row) {
        unsigned char* at = pixels.data + static_cast<std::ptrdiff_t>(row) * pixels.pitch;
        for (int column = 0; column < pixels.width; ++column, at += bytes, ++index) {
            work(at[0], at[1], at[2], index);
        }
    }
}

} // namespace cli
