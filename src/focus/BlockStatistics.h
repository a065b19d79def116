// Sums over square blocks of a plane, in one form a vector class.
#pragma once

#include "simd/VectorClass.h"

#include <cstddef>
#include <cstdint>

namespace focus {

/// The side of a block in pixels: CImageFocus::m_EstBlock, which no operation changes.
inline constexpr int kBlockSide = 8;

struct BlockSums {
    std::uint32_t samples; ///< at most 64 * 255
    std::uint32_t squares; ///< of the samples; at most 64 * 255^2
};

struct BlockStatistics {
    /// Sums up `count` blocks side by side, the first at `samples`, in a plane with rows of `stride` bytes. Reads
    /// nothing but the blocks.
    void (*SumRow)(const std::uint8_t* samples, std::ptrdiff_t stride, BlockSums* blocks, int count);
};

CLARIBOX_PER_VECTOR_CLASS(BlockStatistics, kBlockStatistics, ActiveBlockStatistics)

} // namespace focus
