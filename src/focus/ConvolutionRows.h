// Row work of the spatial filter, in one form a vector class.
#pragma once

#include "simd/VectorClass.h"

#include <cstdint>

namespace focus {

/// The row functions may read and, unless told otherwise, write up to this many elements past their count, so that
/// they need no tail loops.
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
/// from the middle, two 16-bit numbers side by side, with `half` columns of margin on either end.
struct FoldedSums {
    const std::uint32_t* pairs;
    int pairStride; ///< columns from one pair row to the next
    int pairCount;
    int half;                          ///< columns left and right of the middle
    const std::uint32_t* coefficients; ///< for each pair, for each distance 0..half: those of the two rows, as a pair
    bool addBox;                       ///< every coefficient is 65536 more than it says
};

struct ConvolutionRows {
    /// Stores above + below of both rows as pairs, the first row's number in the low half.
    void (*FoldRows)(const MirroredRows& rows, std::uint32_t* pairs, int count);

    /// sums[x] = the mirrored kernel's sum of products at column x, modulo 2^32.
    void (*SumFolded)(const FoldedSums& folded, std::int32_t* sums, int count);

    /// sums[x] = the sum of coefficient times samples[x] over all taps, modulo 2^32.
    void (*SumTaps)(const Tap* taps, int tapCount, std::int32_t* sums, int count);

    /// samples[x] = sums[x] * reciprocals[x], truncated toward zero and saturated to 0..255. Writes no slack.
    void (*PackQuotients)(const std::int32_t* sums, const double* reciprocals, std::uint8_t* samples, int count);
};

CLARIBOX_VECTOR_VARIANTS(ConvolutionRows, kConvolutionRows, ActiveConvolutionRows)

} // namespace focus
