// The spatial filter on a picture in the host's memory.
#pragma once

#include "PictureSamples.h"

#include <claribox/CImageFocus.h>

#include <cstdint>

namespace focus {

/// Packed pixels as an operation of CImageFocus gets them.
struct PackedPicture {
    std::uint8_t* pixels; ///< the first pixel of the top row
    FoPixelFmt format;
    int pitch; ///< bytes from row to row, may be negative
    int width;
    int height;

    /// False for a format that is not known as well.
    bool HasPixels() const {
        return (format == FoPixelFmt_BGR24 || format == FoPixelFmt_BGRX32) && width > 0 && height > 0;
    }

    /// All colours, of a picture that has pixels, and the one at a byte of each pixel: 0 blue, 1 green, 2 red.
    PictureSamples Colours() const { return {pixels, pitch, width, height, format == FoPixelFmt_BGR24 ? 3 : 4, 3}; }
    PictureSamples Colour(int byte) const {
        return {pixels + byte, pitch, width, height, format == FoPixelFmt_BGR24 ? 3 : 4, 1};
    }
};

/// Filters each colour by `kernel` in place, as CImageFocus::ConvolvePlane would filter its plane; the fourth byte of
/// 32-bit pixels is not written. Nothing happens where there are no pixels or the kernel is empty. Memory: the rows
/// under the kernel and some more, below 1 MiB for the usual sizes, whatever the height.
void ConvolvePixels(const PackedPicture& picture, const ChMatrix<float>& kernel);

} // namespace focus
