// One level of the transform as a two-channel filter bank in polyphase form (P. P. Vaidyanathan, Multirate Systems and
// Filter Banks, 1993): two sequences at half rate in, two out, in either direction.
//
//     forward:  even and odd samples -> low and high samples        inverse:  low and high samples -> even and odd
//
// so that rows and columns, forward and inverse, are all weighted sums of shifted sequences.
#pragma once

#include "WaveletFilterSet.h"

#include <array>
#include <vector>

namespace wavelet {

/// One product: `weight` times element k + `shift` of input sequence `input`, for output element k.
struct Term {
    int input;
    int shift;
    float weight;
};

/// The terms of both output sequences, in the order in which they must be added.
using Polyphase = std::array<std::vector<Term>, 2>;

/// Terms of the forward direction: taps in rising order.
Polyphase ForwardTerms(const WaveletFilter& low, const WaveletFilter& high);

/// Terms of the inverse direction: those of the low band by rising sample index, then those of the high band.
Polyphase InverseTerms(const WaveletFilter& low, const WaveletFilter& high);

} // namespace wavelet
