// The two ways in which the spatial filter forms its sums of products, chosen by the shape of the kernel.
//
// Both work down a tile: some samples of each row of a band, few enough that what they need stays in the first-level
// cache. StartTile() takes the sample where the tile begins and their number, at most TileSamples(); SumNextRow() then
// returns the sums of the tile's rows, one at a call from the top down, valid until the next call.
#pragma once

#include "ConvolutionRows.h"
#include "QuantisedKernel.h"
#include "SourceBand.h"
#include "simd/AlignedVector.h"

#include <cstdint>
#include <vector>

namespace focus {

/// Sums for kernels that equal their mirror images, as those of focus are. Each source row is folded once about every
/// column: the samples at equal distances to the left and right are added, two distances side by side. Rows so folded
/// are then added about the middle row and meet their common coefficients in a 16-bit multiply-add: an eighth of the
/// multiplications, and every load aligned. A blur's coefficients lie between 0.7 and 1 and need 17 bits; they are
/// split as 65536 plus a 16-bit remainder, and the first part is a box: the difference of two running sums.
class MirroredSums {
public:
    /// True if the kernel is mirrored and its coefficients, or what is left of them after 65536, fit into 16 bits.
    static bool Serves(const QuantisedKernel& kernel);

    /// What the band has to hold about each pixel.
    static Reach ReachOf(const QuantisedKernel& kernel) { return kernel.FullReach(); }

    MirroredSums(const QuantisedKernel& kernel, const SourceBand& band);
    MirroredSums(const MirroredSums&) = delete; // holds addresses of its own parts

    int TileSamples() const { return m_Layout.samples; }
    void StartTile(int x, int count);
    const std::int32_t* SumNextRow();

private:
    void FoldNextRow();

    const SourceBand& m_Band;
    const ConvolutionRows& m_Rows = ActiveConvolutionRows();
    std::vector<std::uint32_t> m_Coefficients;
    MirroredKernel m_Layout;
    simd::AlignedVector<std::uint32_t> m_Ring; // as many folded rows as the kernel covers at two pixels, and one above
    std::vector<std::uint32_t*> m_FoldedRows;  // twice around the ring, so that any rows of it follow each other
    int m_Count = 0;
    std::size_t m_Last = 0;                        // row of the ring that was folded last
    simd::AlignedVector<std::int32_t> m_UpperSums; // rows are summed two at once
    simd::AlignedVector<std::int32_t> m_LowerSums;
    bool m_HasLower = false; // the lower one was not yet asked for
    const std::uint8_t* m_NextSource = nullptr;
};

/// Sums for any kernel, over the coefficients that are not zero: a motion kernel of length 15 has about 20 of them
/// among its 961. Two at a time, each split into two parts of 16 bits.
class TapSums {
public:
    static Reach ReachOf(const QuantisedKernel& kernel) { return kernel.NonzeroReach(); }

    TapSums(const QuantisedKernel& kernel, const SourceBand& band);

    int TileSamples() const;
    void StartTile(int x, int count);
    const std::int32_t* SumNextRow();

private:
    const SourceBand& m_Band;
    const ConvolutionRows& m_Rows = ActiveConvolutionRows();
    std::vector<TapPair> m_Pairs;
    simd::AlignedVector<std::int32_t> m_Sums;
    int m_Count = 0;
    const std::uint8_t* m_NextSource = nullptr;
};

} // namespace focus
