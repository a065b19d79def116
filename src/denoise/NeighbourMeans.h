// Means over like neighbours, in place and in raster order: rows above and the sample to the left already hold their
// new values when they serve as neighbours, which is part of the result.
#pragma once

#include <cstdint>

namespace denoise {

/// A plane of width * height samples and the rectangle of it whose samples become means. Neighbours are taken from
/// the whole plane.
template <typename Sample>
struct MeanArea {
    Sample* plane;
    int width;
    int height;
    int left;
    int top;
    int columns;
    int rows;
};

/// Each byte p becomes the mean, truncated, of those samples in the square of side 2 * radius + 1 around it that differ
/// from it by at most `tolerance`.
void SmoothBytes(const MeanArea<std::uint8_t>& area, int radius, int tolerance);

/// The same on floats, with sum and quotient in double; a sample of exactly 0.0 stays.
void SmoothFloats(const MeanArea<float>& area, int radius, int tolerance);

} // namespace denoise
