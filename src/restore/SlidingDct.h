// The sliding cosine transform: blocks of 16 by 16 samples at every second sample in either direction, in one form a
// vector class.
//
// A row of blocks shares its row transforms with the rows of blocks above and below, and what blocks give back is
// summed up before the inverse row transform: both are made once for each row of samples.
//
//     samples -> row transforms, a ring of 16 rows -> column transforms of a row of blocks -> shrinkage, weights
//                                                                                              |
//     sums of weighted samples and of weights <- inverse row transforms <- sums, a ring of 16 rows <- inverse columns
//
// Each block is weighted by the inverse of the noise that it keeps, and by a Kaiser window.
#pragma once

#include "simd/VectorClass.h"

#include <cstddef>

namespace restore {

inline constexpr int kBlockSide = 16;
inline constexpr int kBlockStep = 2;

/// Blocks that begin up to so many samples before a sample reach it: those of a tile overlap it by as much.
inline constexpr int kBlockOverlap = kBlockSide - kBlockStep;

/// A tile has at most so many columns, an even number; with the overlap its blocks fill vectors of every class.
inline constexpr int kTileColumns = 242;
inline constexpr int kTileBlocks = (kTileColumns + kBlockOverlap) / kBlockStep;

/// What is done to a coefficient at (u, v): its noise has the variance noise[v][u] in the scale of an orthonormal
/// transform.
struct BlockNoise {
    float variance[kBlockSide][kBlockSide];
};

/// One tile of a plane. `source` and `pilot` point to its first sample in planes that go on by kBlockOverlap samples on
/// each side.
struct DctTile {
    const float* source;
    std::ptrdiff_t sourceStride;
    const float* pilot; ///< null: hard thresholds; else Wiener shrinkage by this result of a first step
    std::ptrdiff_t pilotStride;
    float* result; ///< may not overlap the others
    std::ptrdiff_t resultStride;
    int columns; ///< even, 2 to kTileColumns
    int rows;    ///< even
    const BlockNoise* noise;
    float threshold; ///< in standard deviations
};

struct SlidingDct {
    /// Working memory of a tile in floats; from any address.
    std::size_t scratchFloats;
    void (*DenoiseTile)(const DctTile& tile, float* scratch);
};

CLARIBOX_PER_VECTOR_CLASS(SlidingDct, kSlidingDct, ActiveSlidingDct)

} // namespace restore
