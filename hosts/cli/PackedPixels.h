// A picture as the library takes it.
#pragma once

#include <claribox/CImageFocus.h>

#include <cstddef>

namespace cli {

/// `height` rows of `width` pixels of 3 or 4 bytes, by `format`; `pitch` bytes from row to row.
///
/// The colours stand in the order red, green, blue, though the format is named after the reverse: all operations that
/// write treat the three channels alike, so the order changes no byte of the result. The direction guess, which weighs
/// them, has them exchanged meanwhile. Alpha, if there is any, is the fourth byte.
struct PackedPixels {
    unsigned char* data;
    int width;
    int height;
    FoPixelFmt format;
    int pitch;
};

inline std::size_t CountOf(const PackedPixels& pixels) {
    return static_cast<std::size_t>(pixels.width) * static_cast<std::size_t>(pixels.height);
}

/// Calls work(red, green, blue, index) with each pixel, row after row.
template <typename Work>
void ForEachPixel(const PackedPixels& pixels, Work work) {
    const int bytes = pixels.format == FoPixelFmt_BGR24 ? 3 : 4;
    std::size_t index = 0;
    for (int row = 0; row < pixels.height; ++row) {
        unsigned char* at = pixels.data + static_cast<std::ptrdiff_t>(row) * pixels.pitch;
        for (int column = 0; column < pixels.width; ++column, at += bytes, ++index) {
            work(at[0], at[1], at[2], index);
        }
    }
}

} // namespace cli
