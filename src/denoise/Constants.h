// Fixed numbers of the denoiser.
#pragma once

#include <claribox/CImageDenoiser.h>

namespace denoise {

/// Given: side in pixels of the square on which the noise is measured. A larger square would be flat less often, a
/// smaller one measure less noise. Pinned by ProbeRegion and NoiseEstimateTest.
inline constexpr int kEstSide = DnEstSize;

/// Given: how much higher the threshold of the middle range is than that of the finest. Pinned by DenoisePipelineTest.
inline constexpr float kMiddleFactor = 1.2f;

} // namespace denoise
