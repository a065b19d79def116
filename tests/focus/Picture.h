// Packed pixels as a host may hold them.
#pragma once

#include "common/GuardedBuffer.h"

#include <claribox/CImageFocus.h>

#include <ostream>
#include <vector>

/// `padding` bytes between the rows, none behind the last, and the rows bottom up where asked for.
struct Picture {
    int width, height;
    FoPixelFmt format = FoPixelFmt_BGR24;
    int padding = 0;
    bool bottomUp = false;

    int PixelBytes() const { return format == FoPixelFmt_BGR24 ? 3 : 4; }
    int RowBytes() const { return width * PixelBytes() + padding; }
    int Pitch() const { return bottomUp ? -RowBytes() : RowBytes(); }
    std::size_t Bytes() const { return static_cast<std::size_t>(RowBytes() * height - padding); }
    unsigned char* TopRow(unsigned char* block) const { return block + (bottomUp ? RowBytes() * (height - 1) : 0); }
};

inline std::ostream& operator<<(std::ostream& stream, const Picture& picture) {
    return stream << picture.width << " by " << picture.height << ", format " << picture.format << ", pitch "
                  << picture.Pitch();
}

/// Noise that depends on `seed` alone.
inline std::vector<std::uint8_t> RandomBytes(std::size_t count, std::uint32_t seed) {
    std::vector<std::uint8_t> bytes(count);
    FillRandomBytes(bytes, seed);
    return bytes;
}

/// An operation on packed pixels.
using PixelOperation = void (CImageFocus::*)(unsigned char* pixels, FoPixelFmt format, int pitch);

/// An object whose radius and length of motion are both `amount`, and whose noise factor no operation uses.
inline CImageFocus MakeFocus(int width, int height, int amount = 3, int degree = 0) {
    CImageFocus focus;
    focus.SetSize(width, height);
    focus.SetRadius(amount);
    focus.SetMotionLength(amount);
    focus.SetMotionDegree(degree);
    focus.SetNoiseFactor(0.9f);
    return focus;
}
