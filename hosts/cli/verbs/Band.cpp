// The verb `band`.
#include "Denoiser.h"
#include "EveryVerb.h"
#include "Yuv.h"

namespace cli {
namespace {

constexpr int kLargestBand = 2; // of those that `CImageDenoiser::ShowFreqBand` knows

Report ShowBand(const Settings& settings, const PackedPixels& pixels) {
    YuvPlanes planes = ToYuv(pixels);
    DenoiserFor(pixels).ShowFreqBand(planes.y.data(), settings.band);
    ForEachPixel(pixels,
                 [&](unsigned char& b, unsigned char& g, unsigned char& r, std::size_t k) { b = g = r = planes.y[k]; });
    return {};
}

std::string Misfit(const Settings&, const PictureShape& shape) {
    return WaveletMisfit(shape);
}

} // namespace

Verb BandVerb() {
    return {"band", "show one range of frequencies of pictures, in grey",
            WithPictureOptions({{"--band", "N", "0 the finest detail, 1 the middle, 2 the coarse rest",
                                 WholeNumber{&Settings::band, 0, kLargestBand}, true}}),
            PixelOperation{ShowBand, Misfit, DenoiserWorkingBytes<2>}};
}

} // namespace cli
