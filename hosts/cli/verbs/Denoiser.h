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

/// Bytes that a verb takes beside the picture: three planes, and the library's own with `floats` planes of floats.
template <int floats>
std::int64_t DenoiserWorkingBytes(const Settings&, const PictureShape& shape) {
    constexpr std::int64_t scratch = std::int64_t{2} << 20;
    return (3 + 4 * floats) * shape.Pixels() + scratch;
}

} // namespace cli
