// Denoising of a whole picture with checked arguments.
#pragma once

#include <claribox/Restore.h>

#include <cstdint>

namespace restore {

/// Pictures of more than `largestWhole` pixels are denoised in regions of `side` pixels a side, an even number, with
/// what surrounds them: the bytes are the same, and memory is bounded.
struct RegionLimits {
    std::int64_t largestWhole = 50'000'000;
    int side = 4096;
};

void DenoiseInRegions(const claribox::PictureView& picture, const claribox::Noise& noise,
                      const claribox::DenoiseOptions& options, const RegionLimits& limits);

} // namespace restore
