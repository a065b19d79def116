// Means over the eight neighbours for many rows at once, in one form a vector class.
//
// In raster order a sample waits for its left neighbour and for the row above up to one column further right. Rows can
// therefore run at once if each starts three columns behind the one above it (two would do; the third gives the store
// of a step time to arrive before the next rows load it). A band of rows is brought into a skewed copy where the
// samples of one step stand side by side:
//
//     step:     s    s+1   s+2   s+3   s+4         lane l of step s is column s - 3 * l
//     row 0   a(0)  a(1)  a(2)  a(3)  a(4)
//     row 1    .     .     .    b(0)  b(1)
#pragma once

#include "NeighbourMeans.h"
#include "simd/VectorClass.h"

#include <cstddef>
#include <cstdint>

namespace denoise {

struct SkewedMeans {
    int byteLanes;  ///< rows of a band of bytes
    int floatLanes; ///< rows of a band of floats

    /// Makes the means of all rows of the area, radius 1. `scratch` holds SkewedElements(columns, lanes) elements.
    void (*SmoothBytes)(const MeanArea<std::uint8_t>& area, int tolerance, std::int16_t* scratch);
    void (*SmoothFloats)(const MeanArea<float>& area, int tolerance, double* scratch);
};

/// Size of the skewed copy of a band: the steps of all its rows and of the ones above and below, a lane for each.
constexpr std::size_t SkewedElements(int columns, int lanes) {
    return (static_cast<std::size_t>(columns) + 3 * static_cast<std::size_t>(lanes) + 16) *
           (static_cast<std::size_t>(lanes) + 2);
}

CLARIBOX_PER_VECTOR_CLASS(SkewedMeans, kSkewedMeans, ActiveSkewedMeans)

} // namespace denoise
