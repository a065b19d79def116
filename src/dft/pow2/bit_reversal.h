// The order of reversed bits.
#pragma once

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

} // namespace dft
