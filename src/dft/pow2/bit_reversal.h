// The order of reversed bits: element k of a line of 2^bits stands at the index of k's bits reversed.
#pragma once

#include "dft/base/complex.h"

#include <cstdint>

namespace dft {

/// The lowest `bits` bits of `index`, 0 to 31 of them, in reversed order.
constexpr std::int32_t ReverseBits(std::int32_t index, int bits) {
    std::int32_t reversed = 0;
    for (int k = 0; k < bits; ++k) {
        reversed = reversed * 2 + (index >> k & 1);
    }
    return reversed;
}

/// The number after `reversed` in bit-reversed counting below 2 * top. Always inlined: vector sources share no
/// function.
template <typename Index>
[[gnu::always_inline]] inline Index NextReversed(Index reversed, Index top) {
    for (; (reversed & top) != 0; top /= 2) {
        reversed ^= top;
    }
    return reversed | top;
}

/// The numbers below a power of two with their bits reversed, for unrolled loops.
template <int count>
struct ReversedNumbers {
    int of[count] = {};
    constexpr ReversedNumbers() {
        for (int k = 1; k < count; ++k) {
            of[k] = of[k / 2] / 2 + k % 2 * (count / 2);
        }
    }
};
template <int count>
inline constexpr ReversedNumbers<count> kReversed;

/// The lists of a commit table (commit_table.h), without their counts. Lengths of 32 and more have them.
struct BitReversalLists {
    const std::int32_t* reversals;
    const std::int32_t* swaps;
    std::int32_t swapCount;
    const std::int32_t* pairs;
    std::int32_t pairCount;
};

/// Moves each of the 2^log2_length elements, 32 or more, to the index of its bits reversed, in place.
template <typename Real>
void ReverseOrder(Complex<Real>* data, int log2_length, const BitReversalLists& lists);

} // namespace dft
