// CImageDenoiser::Denoise_YUV beside its plain form and beside a peer.
#pragma once

#include "Picture.h"
#include "simd/VectorClass.h"

#include <vector>

namespace bench {

/// Denoises a small picture: in every vector class named the planes, the threshold and the region must be those of the
/// plain form to the last bit, and the peer, where it is installed, must bring its plane closer to the one without
/// noise. Prints what does not and returns false.
bool CheckDenoiser(const std::vector<simd::VectorClass>& classes);

/// Registers `Denoise_YUV/WIDTHxHEIGHT/SUBJECT` for each picture, with noise of deviation 12 on its three planes, where
/// SUBJECT is `claribox:CLASS` for each vector class, `plain`, and `vaguedenoiser`, which gets the luminance alone and
/// is left out with a message where ffmpeg is missing. The measurement of the noise is on. Counters: `ns_per_pixel`;
/// for Claribox `working_KiB`, the peak of heap memory beyond two float planes, and `dB_before` and `dB_after`, the
/// PSNR of the luminance.
void RegisterDenoiseBenchmarks(const std::vector<Picture>& pictures, const std::vector<simd::VectorClass>& classes);

} // namespace bench
