// Planes for the denoiser's tests.
#pragma once

#include <claribox/CImageDenoiser.h>

#include <cstdint>
#include <vector>

/// A smooth picture about `level` with noise of at most `noise` grey levels either way, cut off at 0 and 255.
std::vector<std::uint8_t> NoisyPlane(int width, int height, int level, int noise, std::uint32_t seed);

/// Fills a rectangle with noise of at most `noise` about `level`.
void PutPatch(std::vector<std::uint8_t>& plane, int width, int left, int top, int size, int level, int noise);

/// A denoiser for planes of this size.
CImageDenoiser DenoiserOf(int width, int height);
