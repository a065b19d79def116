#include "Denoiser.h"

namespace cli {

CImageDenoiser DenoiserFor(const PackedPixels& pixels) {
    CImageDenoiser denoiser;
    denoiser.SetSize(pixels.width, pixels.height);
    return denoiser;
}

std::string WaveletMisfit(const PictureShape& shape) {
    const int smallerSide = shape.SmallerSide();
    return smallerSide >= DnMinSide ? ""
                                    : "has a side of " + std::to_string(smallerSide) + " pixels; take a picture of " +
                                          std::to_string(DnMinSide) + " or more on both sides";
}

} // namespace cli
