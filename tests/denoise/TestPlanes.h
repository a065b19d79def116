// Planes for the denoiser's tests.
#pragma once

#include <claribox/CImageDenoiser.h>

#include "common/GuardedBuffer.h"

#include <algorithm>
#include <cstdint>
#include <vector>

/// A smooth picture about `level` with noise of at most `noise` grey levels either way, cut off at 0 and 255.
std::vector<std::uint8_t> NoisyPlane(int width, int height, int level, int noise, std::uint32_t seed);

/// Fills a rectangle with noise of at most `noise` about `level`.
void PutPatch(std::vector<std::uint8_t>& plane, int width, int left, int top, int size, int level, int noise);

/// A denoiser for planes of this size.
CImageDenoiser DenoiserOf(int width, int height);

/// The samples of a plane between guards.
template <typename Sample>
struct GuardedCopy : GuardedBuffer<Sample> {
    GuardedCopy(const std::vector<Sample>& source, std::size_t misalignment)
        : GuardedBuffer<Sample>(source.size(), misalignment) {
        std::copy(source.begin(), source.end(), this->data());
    }
};

/// Expects the samples of `expected` in a plane, bit for bit, and its guards as they were.
template <typename Sample>
void ExpectSame(const std::vector<Sample>& expected, const GuardedBuffer<Sample>& plane, int width) {
    EXPECT_TRUE(SameBytes(expected.data(), plane.data(), expected.size(), static_cast<std::size_t>(width)));
    EXPECT_TRUE(plane.GuardsIntact());
}
