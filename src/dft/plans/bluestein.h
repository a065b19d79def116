// The Bluestein method: a transform of any length as a circular convolution. For vector sources only.
#pragma once

#include "dft/lane_complex.h"
#include "dft/pow2/fft_passes.h"

namespace dft::CLARIBOX_VECTOR_CLASS {

/// The number after `reversed` in the order of reversed bits, all numbers being below 2 * top.
inline int NextReversed(int reversed, int top) {
    int bit = top;
    for (; (reversed & bit) != 0; bit >>= 1) {
        reversed ^= bit;
    }
    return reversed | bit;
}

/// `buffer` has room for `bluestein_length` elements. The spectrum in between never needs its natural order.
template <Direction direction, typename V>
void RunBluestein(const BasicDftPlan<Real<V>>& plan, const LaneComplex<V>* input, LaneComplex<V>* output,
                  LaneComplex<V>* buffer) {
    const int length = plan.length;
    const int points = plan.bluestein_length;
    for (int k = 0; k < length; ++k) {
        buffer[k] = Rotate<kForward>(input[k], plan.chirp[k]);
    }
    for (int k = length; k < points; ++k) {
        buffer[k] = LaneComplex<V>{};
    }
    FftScramble<V>(*plan.bluestein_fft_plan, buffer);
    for (int k = 0, natural = 0; k < points; ++k, natural = NextReversed(natural, points / 2)) {
        buffer[k] = Rotate<kForward>(buffer[k], plan.chirp_spectrum[natural]);
    }
    FftUnscramble<V>(*plan.bluestein_fft_plan, buffer);
    output[0] = Rotate<kForward>(buffer[0], plan.chirp[0]);
    for (int k = 1; k < length; ++k) {
        // The backward transform is the forward one with the index reversed.
        output[direction == kForward ? k : length - k] = Rotate<kForward>(buffer[k], plan.chirp[k]);
    }
}

} // namespace dft::CLARIBOX_VECTOR_CLASS
