#include "Polyphase.h"

namespace wavelet {
namespace {

int FloorHalf(int n) {
    return n >= 0 ? n / 2 : -((1 - n) / 2);
}

// Output element k is the sum of taps[j] times sample 2k + firstTap + j; sample 2k + o is element k + floor(o / 2) of
// the sequence that the parity of o names.
std::vector<Term> AnalysisTerms(const WaveletFilter& filter) {
    std::vector<Term> terms;
    for (int j = 0; j < filter.tapCount; ++j) {
        const int offset = filter.firstTap + j;
        const int shift = FloorHalf(offset);
        terms.push_back({offset - 2 * shift, shift, filter.taps[j]});
    }
    return terms;
}

// Band sample i adds taps[j] times itself to sample firstTap + 2i + j. Sample 2k + parity therefore takes
// j = parity - firstTap - 2 * (i - k), and rising i means falling j.
void AppendSynthesisTerms(std::vector<Term>& terms, const WaveletFilter& filter, int band, int parity) {
    for (int j = filter.tapCount - 1; j >= 0; --j) {
        const int twice = parity - filter.firstTap - j;
        if (twice % 2 == 0) {
            terms.push_back({band, twice / 2, filter.taps[j]});
        }
    }
}

} // namespace

Polyphase ForwardTerms(const WaveletFilter& low, const WaveletFilter& high) {
    return {AnalysisTerms(low), AnalysisTerms(high)};
}

Polyphase InverseTerms(const WaveletFilter& low, const WaveletFilter& high) {
    Polyphase terms;
    for (const int parity : {0, 1}) {
        AppendSynthesisTerms(terms[static_cast<std::size_t>(parity)], low, 0, parity);
        AppendSynthesisTerms(terms[static_cast<std::size_t>(parity)], high, 1, parity);
    }
    return terms;
}

} // namespace wavelet
