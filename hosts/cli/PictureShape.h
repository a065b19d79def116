// The shape of a picture, known before it is decoded.
#pragma once

#include <algorithm>
#include <cstdint>

namespace cli {

struct PictureShape {
    int width; ///< as stored: an orientation may exchange it with the height
    int height;
    int bands; ///< as the picture is worked on: 1 to 4 bytes a pixel

    int SmallerSide() const { return std::min(width, height); }
    std::int64_t Pixels() const { return std::int64_t{width} * height; }
    bool IsGrey() const { return bands < 3; }
    bool HasAlpha() const { return bands % 2 == 0; }
};

} // namespace cli
