// How a transform of 2^log2_length elements falls into passes, and where its twiddles are. The page to begin with.
//
// Forward, from the whole line down; backward the same steps from the bottom up:
//
//     |                                whole line                                 |  levels: radix-2 passes, two at
//     |         group         |         group         |     group     |   group   |  once, down to groups; then the
//     |  block  |  block  |  block  |  block  |  ...                              |  same in each group, to blocks
//     |    |    |    |    |    |    |                                                in a block: radix-4 passes, depth
//     ||||||||||||||||||||||||||||||                                                 first, down to 4 elements
//
// A block whose log2 is odd begins with one radix-2 pass more. Short lines are one block; longer ones have blocks and
// no groups (two-level), the longest have both (three-level): the block fits the first-level cache, the group the
// second. Plans of powers of two (fft_plan.h) are one block of any length.
//
// The passes (record_passes.h, fft_run.h) are templates of three things, and give the same bytes with each:
//
//     vectors    across lines, one element of several, or within a line, several elements of one     layouts.h
//     layout     where the elements lie: arrays, interleaved or separated parts, columns             layouts.h
//     twiddles   series by element (static tables, a plan's stages), or triples by block             depth_first.h
#pragma once

#include "dft/base/record.h"
#include "dft/pow2/commit_table.h"

#include <cstdint>

namespace dft {

template <typename Real>
struct Pow2Schedule {
    int log2_length;
    int groupBits;    ///< log2 of the elements of a group; two-level: of a block
    int blockBits;    ///< log2 of the elements of a block
    bool ordered;     ///< spectra in natural order
    const Real* even; ///< the static levels (stage_tables.h), which serve where the table has no twiddles
    const Real* odd;
    CommitTable<Real> table;
    Real scaleBefore; ///< factor of all elements before the first pass
    Real scaleAfter;  ///< and after the last; one of the two is the record's, the other 1
};

/// The schedule of a committed record for the variant in force.
template <typename Real>
Pow2Schedule<Real> ScheduleOf(const DftDescriptor& record, Direction direction);

} // namespace dft
