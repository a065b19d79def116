// Between natural and bit-reversed order, in place.
#pragma once

#include "dft/base/complex.h"
#include "dft/pow2/commit_table.h"

namespace dft {

/// Moves each of the 2^log2_length elements, 32 or more, to the index of its bits reversed.
template <typename Real>
void ReverseOrder(Complex<Real>* data, int log2_length, const BitReversalLists& lists);

} // namespace dft
