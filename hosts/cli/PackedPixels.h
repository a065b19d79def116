// A picture as the library takes it.
#pragma once

#include <claribox/CImageFocus.h>

namespace cli {

/// `height` rows of `width` pixels of 3 or 4 bytes, by `format`; `pitch` bytes from row to row.
///
/// The colours stand in the order red, green, blue, though the format is named after the reverse: all operations treat
/// the three channels alike, so the order changes no byte of the result. Alpha, if there is any, is the fourth byte.
struct PackedPixels {
    unsigned char* data;
    int width;
    int height;
    FoPixelFmt format;
    int pitch;
};

} // namespace cli
