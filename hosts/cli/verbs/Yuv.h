// Full-range luminance and chrominance of BT.601, rounded to the nearest byte, as in JPEG files (ITU-T T.871): what the
// library's denoiser works on.
#pragma once

#include "PackedPixels.h"

#include <cstdint>
#include <vector>

namespace cli {

struct Yuv {
    Yuv(int blue, int green, int red);

    unsigned char y;
    unsigned char u;
    unsigned char v;
};

/// Full-size planes of luminance and chrominance.
struct YuvPlanes {
    explicit YuvPlanes(std::size_t samples) : y(samples), u(samples), v(samples) {}

    std::vector<unsigned char> y;
    std::vector<unsigned char> u;
    std::vector<unsigned char> v;
};

YuvPlanes ToYuv(const PackedPixels& pixels);
void FromYuv(const YuvPlanes& planes, const PackedPixels& pixels);

/// What chrominance, as a distance from its middle, adds to the luminance of each colour, times 65536.
struct ColourTerms {
    ColourTerms(std::int64_t u, std::int64_t v);

    std::int64_t blue;
    std::int64_t green;
    std::int64_t red;
};

/// A number with 16 fractional bits as the nearest byte.
unsigned char RoundedByte(std::int64_t number);

} // namespace cli
