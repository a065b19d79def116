#include "PackedPixels.h"

#include <utility>

namespace cli {
namespace {

/// In place: RGB becomes BGR, and the other way round.
void ReverseColours(const PackedPixels& pixels) {
    ForEachPixel(pixels, [](unsigned char& first, unsigned char&, unsigned char& third, std::size_t) {
        std::swap(first, third);
    });
}

} // namespace

PackedPixels Pack(const VipsSamples& samples, std::vector<unsigned char>& spread) {
    if (samples.bands >= 3) {
        const FoPixelFmt format = samples.bands == 3 ? FoPixelFmt_BGR24 : FoPixelFmt_BGRX32;
        const PackedPixels pixels = {samples.data, samples.width, samples.height, format,
                                     samples.width * samples.bands};
        ReverseColours(pixels);
        return pixels;
    }
    spread.resize(std::size_t{3} * static_cast<std::size_t>(samples.width) * static_cast<std::size_t>(samples.height));
    const PackedPixels pixels = {spread.data(), samples.width, samples.height, FoPixelFmt_BGR24, 3 * samples.width};
    ForEachPixel(pixels, [&](unsigned char& blue, unsigned char& green, unsigned char& red, std::size_t k) {
        blue = green = red = samples.data[k * static_cast<std::size_t>(samples.bands)];
    });
    return pixels;
}

void Unpack(const PackedPixels& pixels, const VipsSamples& samples) {
    if (samples.bands >= 3) {
        ReverseColours(pixels);
        return;
    }
    ForEachPixel(pixels, [&](unsigned char blue, unsigned char, unsigned char, std::size_t k) {
        samples.data[k * static_cast<std::size_t>(samples.bands)] = blue;
    });
}

} // namespace cli
