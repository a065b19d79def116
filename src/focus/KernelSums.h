// The two ways in which the spatial filter forms its sums of products, chosen by the shape of the kernel.
#pragma once

#include "ConvolutionRows.h"
#include "QuantisedKernel.h"
#include "RowRing.h"

#include <cstdint>
#include <vector>

namespace focus {

/// Columns of a row that are worked on at once, so that folded rows and sums stay in the first-level cache.
inline constexpr int kTileColumns = 512;

/// Sums for kernels that equal their mirror images, as those of focus are. Samples at mirrored places are added first,
/// two kernel rows at a time, and then meet their common coefficient in a 16-bit multiply-add: an eighth of the
/// multiplications. A blur's coefficients lie between 0.7 and 1 and need 17 bits; they are split as 65536 plus a
/// 16-bit remainder, and the first part is a plain sum of the samples.
class MirroredSums {
public:
    /// True if the kernel is mirrored and its coefficients, or what is left of them after 65536, fit into 16 bits.
    static bool Serves(const QuantisedKernel& kernel);

    explicit MirroredSums(const QuantisedKernel& kernel);

    /// Stores the sums at columns x .. x + count - 1 of row y; count is at most kTileColumns.
    void operator()(const RowRing& ring, int y, int x, int count, std::int32_t* sums);

private:
    int PairCount() const { return m_halfRows / 2 + 1; }
    int PairStride() const { return kTileColumns + 2 * m_halfCols + kRowSlack; }

    int m_halfRows;
    int m_halfCols;
    bool m_hasBox;
    std::vector<std::uint32_t> m_coefficients;
    std::vector<std::uint32_t> m_pairs;
    const ConvolutionRows& m_rows = ActiveConvolutionRows();
};

/// Sums for any kernel: one 32-bit multiplication a coefficient that is not zero. A motion kernel of length 15 has
/// about 20 of them among its 961.
class TapSums {
public:
    explicit TapSums(const QuantisedKernel& kernel);

    /// As MirroredSums.
    void operator()(const RowRing& ring, int y, int x, int count, std::int32_t* sums);

private:
    struct Place {
        int dy;
        int dx;
        std::uint32_t coefficient;
    };
    std::vector<Place> m_places;
    std::vector<Tap> m_taps;
    const ConvolutionRows& m_rows = ActiveConvolutionRows();
};

} // namespace focus
