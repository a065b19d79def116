// Fixed numbers of the denoiser.
#pragma once

#include <claribox/CImageDenoiser.h>

namespace denoise {

/// Side in pixels of the square on which the noise is measured.
inline constexpr int kEstSide = DnEstSize;

/// The threshold of the middle range is this much above that of the finest.
inline constexpr float kMiddleFactor = 1.2f;

} // namespace denoise
