#include "dft/pow2/bit_reversal.h"

#include <cstddef>
#include <utility>

namespace dft {

template <typename Real>
void ReverseOrder(Complex<Real>* data, int log2_length, const BitReversalLists& lists) {
    constexpr const int(&reversed)[4] = kReversed<4>.of;
    const std::ptrdiff_t row = std::ptrdiff_t{1} << (log2_length - 2);
    for (std::int32_t k = 0; k < lists.swapCount; ++k) {
        Complex<Real>* const block = data + std::ptrdiff_t{4} * lists.swaps[k];
        Complex<Real>* const other = data + std::ptrdiff_t{4} * lists.reversals[lists.swaps[k]];
        for (int i = 0; i < 4; ++i) {
            for (int j = 0; j < 4; ++j) {
                std::swap(block[i * row + j], other[reversed[j] * row + reversed[i]]);
            }
        }
    }
    for (std::int32_t k = 0; k < lists.pairCount; ++k) {
        std::swap(data[lists.pairs[2 * k]], data[lists.pairs[2 * k + 1]]);
    }
}

template void ReverseOrder(Complex<float>*, int, const BitReversalLists&);
template void ReverseOrder(Complex<double>*, int, const BitReversalLists&);

} // namespace dft
