// What the verbs on `CImageDenoiser` share.
#pragma once

#include "PackedPixels.h"
#include "PictureShape.h"
#include "Settings.h"

#include <claribox/CImageDenoiser.h>

#include <cstdint>
#include <string>

namespace cli {

CImageDenoiser DenoiserFor(const PackedPixels& pixels);

/// Why a picture of this shape cannot be split by wavelets; empty if it can.
std::string WaveletMisfit(const PictureShape& shape);

/// Bytes that both verbs take beside the picture: three planes and the library's own.
std::int64_t DenoiserWorkingBytes(const Settings& settings, const PictureShape& shape);

} // namespace cli
