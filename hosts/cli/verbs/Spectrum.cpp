// The verb `spectrum`.
#include "EveryVerb.h"
#include "TransformLimits.h"

#include <claribox/ChFunctions.h>

#include <vips/vips8>

#include <algorithm>
#include <vector>

namespace cli {
namespace {

/// Moves the plane's first pixel to the middle and all others with it, wrapping around at the edges.
void Centre(std::vector<unsigned char>& plane, int width, int height) {
    const vips::VImage image =
        vips::VImage::new_from_memory(plane.data(), plane.size(), width, height, 1, VIPS_FORMAT_UCHAR);
    const vips::VImage centred = image.wrap().copy_memory();
    const auto* first = static_cast<const unsigned char*>(centred.data());
    std::copy(first, first + plane.size(), plane.begin());
}

/// Replaces the picture, which is grey by now, by its power spectrum, on request with the zero frequency in the middle:
/// at column width/2 and row height/2.
Report ShowSpectrum(const Settings& settings, const PackedPixels& pixels) {
    std::vector<unsigned char> plane(CountOf(pixels));
    ForEachPixel(pixels, [&](int b, int, int, std::size_t k) { plane[k] = static_cast<unsigned char>(b); });
    ChShowPowerSpectrum(plane.data(), pixels.width, pixels.height);
    if (settings.centred) {
        Centre(plane, pixels.width, pixels.height);
    }
    ForEachPixel(pixels,
                 [&](unsigned char& b, unsigned char& g, unsigned char& r, std::size_t k) { b = g = r = plane[k]; });
    return {};
}

std::string Misfit(const Settings&, const PictureShape& shape) {
    return TransformMisfit(shape.width, shape.height);
}

std::int64_t WorkingBytes(const Settings&, const PictureShape& shape) {
    constexpr std::int64_t bytesPerPixel = 8 + 1 + 1; // a spectrum, its plane and the centred one
    return bytesPerPixel * shape.Pixels() + TransformLineBytes(shape);
}

} // namespace

Verb SpectrumVerb() {
    return {
        "spectrum", "show the power spectrum of pictures: of their luminance, on a logarithmic scale, in grey",
        WithPictureOptions(
            {{"--centred,--centered", "", "put the zero frequency into the middle instead of the top left corner",
              &Settings::centred}}),
        PixelOperation{.apply = ShowSpectrum, .misfit = Misfit, .workingBytes = WorkingBytes, .luminanceAlone = true}};
}

} // namespace cli
