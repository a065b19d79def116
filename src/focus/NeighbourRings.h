// How pixels differ from their eight neighbours, in one form a vector class.
#pragma once

#include "simd/VectorClass.h"

#include <cstdint>

namespace focus {

/// Neighbours are numbered counter-clockwise from the right: even ones share a side with the pixel, odd ones a corner.
/// Octant o lies between neighbours o and o + 1 (mod 8).
inline constexpr int kNeighbours = 8;

/// Pixels of one piece of a row. Sums of that many distances in 16-bit lanes stay below 2^15 in every class.
inline constexpr int kRingColumns = 512;

/// Samples past the piece that the row function reads and disregards.
inline constexpr int kRingSlack = 64;

/// A piece of a row and the rows above and below it, each from one column before the piece to one behind it.
struct RingSamples {
    std::uint8_t above[1 + kRingColumns + kRingSlack];
    std::uint8_t own[1 + kRingColumns + kRingSlack];
    std::uint8_t below[1 + kRingColumns + kRingSlack];
};

struct RingMeasures {
    /// For each neighbour the sum of its absolute differences from its pixel.
    std::uint32_t distances[kNeighbours];

    /// For each octant and pixel: 256 times the absolute difference of the neighbour at the corner plus that of the
    /// neighbour at the side, if the pixel lies strictly between the two. Else a number whose upper or lower byte is 0.
    /// Up to kRingSlack - 1 elements past the piece are written.
    std::uint16_t pairs[kNeighbours][kRingColumns + kRingSlack];
};

struct NeighbourRings {
    /// Measures the first `count` pixels of a piece, 1 to kRingColumns.
    void (*Measure)(const RingSamples& samples, int count, RingMeasures& measures);
};

CLARIBOX_PER_VECTOR_CLASS(NeighbourRings, kNeighbourRings, ActiveNeighbourRings)

} // namespace focus
