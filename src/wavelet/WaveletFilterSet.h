// The filters of the wavelet engine: sixteen sets of four, built at load and read-only from then on.
#pragma once

/// One finite impulse response: `taps[k]` stands at filter index `firstTap` + k.
struct WaveletFilter {
    /// Copies `tapCount` coefficients from `source`, or takes zeros where it is null.
    WaveletFilter(int tapCount, int firstTap, const float* source);
    WaveletFilter(const WaveletFilter& other);
    WaveletFilter& operator=(const WaveletFilter& other);
    ~WaveletFilter();

    int tapCount;
    int firstTap; ///< 0 or negative
    int origin;   ///< minus firstTap; read by nothing
    float* taps;  ///< owned
};

/// An analysis and a synthesis pair of filters, and how lines are extended beyond their ends. Given low-pass filters
/// sum to the square root of 2, so that one level in both directions multiplies a flat area by 2.
struct WaveletFilterSet {
    /// Builds the high-pass filters from the low-pass ones (quadrature mirrors: H[1 - k] = (-1)^(k+1) L[k], the
    /// analysis filter from the synthesis one and vice versa; Cohen, Daubechies and Feauveau 1992). A null
    /// `synthesisTaps` makes the set orthogonal: synthesis then uses the analysis filters.
    WaveletFilterSet(int mirrorExtension, const float* analysisTaps, int analysisCount, int analysisFirst,
                     const float* synthesisTaps, int synthesisCount, int synthesisFirst);
    ~WaveletFilterSet();
    WaveletFilterSet(const WaveletFilterSet&) = delete;
    WaveletFilterSet& operator=(const WaveletFilterSet&) = delete;

    int mirrorExtension; ///< 1: lines are mirrored at their ends; 0: they repeat
    WaveletFilter* lowAnalysis;
    WaveletFilter* highAnalysis;
    WaveletFilter* lowSynthesis;
    WaveletFilter* highSynthesis;
};

// In the order in which they are built; they are released in reverse.
extern WaveletFilterSet FilterSetHaar;
extern WaveletFilterSet FilterSetDaub4;
extern WaveletFilterSet FilterSetDaub6;
extern WaveletFilterSet FilterSetDaub8;
extern WaveletFilterSet FilterSetCdf97;
extern WaveletFilterSet FilterSet10x18;
extern WaveletFilterSet FilterSetSym9;
extern WaveletFilterSet FilterSetCdf97b;
extern WaveletFilterSet FilterSet10x10;
extern WaveletFilterSet FilterSetCdf97c;
extern WaveletFilterSet FilterSet13x11;
extern WaveletFilterSet FilterSet6x10;
extern WaveletFilterSet FilterSet5x3;
extern WaveletFilterSet FilterSet2x6;
extern WaveletFilterSet FilterSet9x3;
extern WaveletFilterSet FilterSetDenoise; ///< the only one in use
