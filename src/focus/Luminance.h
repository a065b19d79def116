// The plane that the direction guess looks at.
#pragma once

#include <claribox/CImageFocus.h>

#include <cstdint>
#include <memory>

namespace focus {

/// Luminance of packed pixels, tightly packed. With a step of 2 it has every second row and column from the first on,
/// and half the width and height, truncated; nothing is filtered, and other rows are not read. A format that is not
/// known gives a black plane. Memory: a byte a sample.
class LuminancePlane {
public:
    /// `width` and `height` are those of the picture, `step` is 1 or 2.
    LuminancePlane(const unsigned char* pixels, FoPixelFmt format, int pitch, int width, int height, int step);

    std::uint8_t* Samples() const { return m_Samples.get(); }
    int Width() const { return m_Width; }
    int Height() const { return m_Height; }

private:
    struct Release {
        void operator()(std::uint8_t* block) const;
    };

    int m_Width;
    int m_Height;
    std::unique_ptr<std::uint8_t, Release> m_Samples;
};

} // namespace focus
