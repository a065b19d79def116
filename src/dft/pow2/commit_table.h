// The table that a record of power-of-two length gets at commit.
//
// Two numbers, the length and 0, open the block. The rest counts from the base, the block's address rounded down to a
// multiple of the variant's alignment, plus that alignment; n is the length, an element two numbers:
//
//     log2 n
//     3        number 4 is cos(2 pi / 8)
//     to 12    no twiddles: the static tables serve
//     13, 14   for each radix-2 stage of M = n, n/2, .. 2048 points the M/4 roots exp(-2 pi i j / M), in groups of four
//              real parts, then four imaginary parts. They start at number n - M.
//     15 on    for each b below n/4 the triple w, w^2, w^3 of w = exp(-2 pi i r / n), r being b with its log2 n - 2
//              bits reversed: block b of a radix-4 stage of any size needs this one triple. So also at 14 where the
//              variant runs that length in three levels, as double precision does.
//     from 5   at element n, as 32-bit integers, three lists, each preceded by its count:
//              the n/16 reversals of the block indices, of log2 n - 4 bits: block m is the four rows of elements
//              4m .. 4m + 3, 4m + n/4 .., 4m + n/2 .., 4m + 3n/4 ..;
//              the blocks that swap with the block of the reversed index, each swap once;
//              the index pairs of the elements that swap within blocks.
#pragma once

#include "dft/pow2/bit_reversal.h"

#include <cstdint>

namespace dft {

// Given: what a host reads in a committed table. Pinned by Pow2.CommitTable.
inline constexpr int kFirstListBits = 5;    ///< log2 of the shortest line whose table has lists of the bit reversal
inline constexpr int kFirstTripleBits = 15; ///< log2 of the shortest line whose table has radix-4 triples
inline constexpr int kLastStageBits = 11;   ///< log2 of the points of the shortest radix-2 stage in the table

/// A table as its transforms read it.
template <typename Real>
struct CommitTable {
    const Real* stages;     ///< null where there are none
    const Real* triples;    ///< null where there are none
    BitReversalLists lists; ///< from 32 elements on
};

/// The table in a block that c1d_table_build or z1d_table_build has filled for the variant in force.
template <typename Real>
CommitTable<Real> ReadCommitTable(int log2_length, const void* block);

} // namespace dft
