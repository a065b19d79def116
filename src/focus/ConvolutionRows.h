// Row work of the spatial filter, in one form a vector class.
#pragma once

#include "simd/VectorClass.h"

#include <cstdint>

namespace focus {

/// Every row function may read and write up to this many elements past its count, so that it needs no tail loop.
inline constexpr int kRowSlack = 64;

/// One coefficient of a sparse or asymmetric kernel and the source samples it meets.
struct Tap {
    const std::uint8_t* samples; ///< sample of output column 0
    std::uint32_t coefficient;   ///< 16.16, two's complement
};

/// Two source rows above the pixel's row and their mirror images below it.
struct MirroredRows {
    const std::uint8_t* above[2];
    const std::uint8_t* below[2];
};

/// A row of a mirrored kernel's sums. Pair p holds, for each column, the folded samples of kernel rows 2p and 2p+1
/// from the middle, two 16-bit numbers side by side, `half` columns of margin on either end.
struct FoldedSums {
    const std::int16_t* pairs;
    int pairStride; ///< 16-bit elements from one pair row to the next
    int pairCount;
    int half;                         ///< columns left and right of the middle
    const std::int16_t* coefficients; ///< for each pair, for each distance 0..half: those of the two rows
    const std::uint16_t* box;         ///< 65536ths to add for each column, or null for none
};

struct ConvolutionRows {
    /// Stores above + below of both rows side by side in `pairs` and adds them to `columnSums`.
    void (*FoldRows)(const MirroredRows& rows, std::int16_t* pairs, std::uint16_t* columnSums, int count);

    /// box[x] = columnSums[x] + ... + columnSums[x + width - 1], modulo 2^16.
    void (*BoxSums)(const std::uint16_t* columnSums, int width, std::uint16_t* box, int count);

    /// sums[x] = the mirrored kernel's sum of products at column x, modulo 2^32.
    void (*SumFolded)(const FoldedSums& folded, std::int32_t* sums, int count);

    /// sums[x] = the sum of coefficient times samples[x] over all taps, modulo 2^32.
    void (*SumTaps)(const Tap* taps, int tapCount, std::int32_t* sums, int count);

    /// values[x] becomes values[x] * reciprocals[x], truncated toward zero and at most 2^31 - 1.
    void (*Divide)(std::int32_t* values, const double* reciprocals, int count);
};

CLARIBOX_VECTOR_VARIANTS(ConvolutionRows, kConvolutionRows, ActiveConvolutionRows)

} // namespace focus
