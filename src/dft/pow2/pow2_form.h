// The plan of one power-of-two transform: how it falls into levels, and where its twiddles are.
#pragma once

#include "dft/base/record.h"
#include "dft/pow2/commit_table.h"

#include <cstdint>

namespace dft {

/// A transform of 2^log2_length elements starts with radix-2 passes over the whole array down to groups, goes on with
/// radix-2 passes over each group down to blocks, and runs each block in radix 4, after one radix-2 pass where its
/// log2 is odd. A two-level transform has groups as long as its blocks, a small one has blocks as long as itself. The
/// backward transform goes the same way in the opposite order.
template <typename Real>
struct Pow2Form {
    int log2_length;
    int groupBits;    ///< log2 of the elements of a group
    int blockBits;    ///< log2 of the elements of a block
    bool ordered;     ///< spectra in natural order
    const Real* even; ///< the static levels (static_tables.h)
    const Real* odd;
    const Real* stages;     ///< the commit table's stages (commit_table.h); null: the static levels serve
    const Real* triples;    ///< the commit table's triples; null: twiddles go by element, not by block
    BitReversalLists lists; ///< from 32 elements on
    Real scaleBefore;       ///< factor of all elements before the first pass
    Real scaleAfter;        ///< and after the last; one of the two is the record's, the other 1
};

/// The form of a record for the variant in force.
template <typename Real>
Pow2Form<Real> FormOf(const DftDescriptor& record, Direction direction);

} // namespace dft
