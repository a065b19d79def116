// Row work of the spatial filter, in one form a vector class.
#pragma once

#include "simd/VectorClass.h"

#include <cstddef>
#include <cstdint>

namespace focus {

/// The row functions may read and, unless stated otherwise, write up to this many elements past their count, so that
/// they need no tail loops. Sums and folded samples of a row stand in an order of each class's own within this many
/// columns.
inline constexpr int kRowSlack = 64;

/// Two coefficients of a sparse or asymmetric kernel, each split as 65536 * high + low.
struct TapPair {
    std::ptrdiff_t offset[2]; ///< from the sample at the output column to the one that meets the coefficient
    std::uint32_t low;        ///< two 16-bit numbers with sign, side by side, the first tap's in the low half
    std::uint16_t high[2];
};

/// A kernel that equals its mirror images, and the layout of its folded rows.
///
/// A folded row is made of planes of `samples` elements. Plane p holds, for each sample, the sum of the two samples at
/// distance 2p to its left and right and that at distance 2p + 1, two 16-bit numbers side by side, the first in the
/// low half (at distance 0: the sample alone). With a box there is one more plane: 65536 times the sum of all samples
/// that the kernel's width covers, added up over all folded rows so far, modulo 2^32.
struct MirroredKernel {
    int halfRows; ///< rows above the middle, and below
    int halfCols;
    int step;                          ///< samples from a column to the next: of packed pixels 3
    int pairCount;                     ///< halfCols / 2 + 1
    int samples;                       ///< a multiple of kRowSlack
    bool hasBox;                       ///< every coefficient is 65536 more than it says
    const std::uint32_t* coefficients; ///< for each pair of distances, for each row from the middle: the two
};

struct ConvolutionRows {
    /// Folds `count` samples and their neighbours; `before` is the folded row above, whose running sums go on.
    void (*FoldRow)(const MirroredKernel& kernel, const std::uint8_t* samples, const std::uint32_t* before,
                    std::uint32_t* folded, int count);

    /// upperSums[x] and lowerSums[x] = the mirrored kernel's sums of products at sample x of two successive rows,
    /// modulo 2^32. `rows` are the 2 * halfRows + 2 folded rows that the kernel covers there, from the top down, after
    /// the one above them.
    void (*SumFolded)(const MirroredKernel& kernel, const std::uint32_t* const* rows, std::int32_t* upperSums,
                      std::int32_t* lowerSums, int count);

    /// sums[x] = the sum of coefficient times samples[x + offset] over all taps, modulo 2^32.
    void (*SumTaps)(const std::uint8_t* samples, const TapPair* pairs, int pairCount, std::int32_t* sums, int count);

    /// samples[x] = sums[x] * reciprocals[x], truncated toward zero and saturated to 0..255. Writes no slack. The
    /// reciprocals stand in natural order.
    void (*PackQuotients)(const std::int32_t* sums, const double* reciprocals, std::uint8_t* samples, int count);

    /// The same with one reciprocal for all.
    void (*PackQuotientsByOne)(const std::int32_t* sums, double reciprocal, std::uint8_t* samples, int count);
};

CLARIBOX_PER_VECTOR_CLASS(ConvolutionRows, kConvolutionRows, ActiveConvolutionRows)

} // namespace focus
