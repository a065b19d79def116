// The Bluestein method: a transform of any length as a circular convolution. For vector sources only.
#pragma once

#include "dft/base/lane_complex.h"
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

/// Convolves, circularly, one block of 2^stage elements whose frequencies begin at `reversed`, in bit-reversed order:
/// takes it apart, multiplies by the spectrum, and puts it together again. Depth first, so that most of that happens in
/// the first-level cache, and the spectrum in between never needs its natural order.
template <typename V>
void Convolve(const BasicDftPlan<Real<V>>& plan, LaneComplex<V>* data, int stage, int reversed) {
    const BasicFftPlan<Real<V>>& fft = *plan.bluestein_fft_plan;
    const int top = plan.bluestein_length / 2;
    if (stage > kCachedBits<V>) {
        const std::ptrdiff_t quarter = std::ptrdiff_t{1} << (stage - 2);
        const int step = plan.bluestein_length >> stage; // a bit of the frequency for each level above this one
        Pass4<kForward, kScramble, kAfter>(data, data, quarter, 1, StageTwiddles(fft, stage));
        Convolve(plan, data, stage - 2, reversed);
        Convolve(plan, data + quarter, stage - 2, reversed + 2 * step);
        Convolve(plan, data + 2 * quarter, stage - 2, reversed + step);
        Convolve(plan, data + 3 * quarter, stage - 2, reversed + 3 * step);
        Pass4<kBackward, kUnscramble, kBefore>(data, data, quarter, 1, StageTwiddles(fft, stage));
        return;
    }
    FrequencyPasses<kForward, V>(fft, data, stage);
    for (int k = 0; k < 1 << stage; ++k, reversed = NextReversed(reversed, top)) {
        data[k] = Rotate<kForward>(data[k], plan.chirp_spectrum[reversed]);
    }
    TimePasses<kBackward, V>(fft, data, stage, 0);
}

/// `buffer` has room for `bluestein_length` elements.
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
    Convolve(plan, buffer, plan.bluestein_fft_plan->order, 0);
    output[0] = Rotate<kForward>(buffer[0], plan.chirp[0]);
    for (int k = 1; k < length; ++k) {
        // The backward transform is the forward one with the index reversed.
        output[direction == kForward ? k : length - k] = Rotate<kForward>(buffer[k], plan.chirp[k]);
    }
}

} // namespace dft::CLARIBOX_VECTOR_CLASS
