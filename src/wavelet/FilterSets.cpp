// The sixteen filter sets. All numbers are given, not computed: nine significant digits fix each float
// (tests/wavelet/FilterSetTest.cpp holds them to a checksum and to their mathematics).
#include "WaveletFilterSet.h"

#include "processor/LoadOrder.h"

#include <bit>
#include <cstdint>

namespace {

// Haar's pair is one over the square root of 2, by its bits.
constexpr float kHaarTap = std::bit_cast<float>(std::uint32_t{0x3F3504F3});
const float kHaarLow[] = {kHaarTap, kHaarTap};

// Daubechies' orthogonal filters of 4, 6 and 8 taps (Ten Lectures on Wavelets, 1992).
const float kDaub4Low[] = {0.482962906f, 0.836516321f, 0.224143863f, -0.129409522f};

const float kDaub6Low[] = {0.33267054f, 0.806891501f, 0.459877491f, -0.135011017f, -0.0854412764f, 0.0352262929f};

const float kDaub8Low[] = {0.230377808f,  0.714846551f,  0.630880773f,  -0.0279837698f,
                           -0.187034816f, 0.0308413822f, 0.0328830108f, -0.0105974022f};

// The biorthogonal 9/7 pair of Cohen, Daubechies and Feauveau (1992), scaled to a sum of the square root of 2.
const float kCdf97Analysis[] = {0.0378284566f, -0.023849465f, -0.110624403f, 0.377402842f, 0.852698684f,
                                0.377402842f,  -0.110624403f, -0.023849465f, 0.0378284566f};
const float kCdf97Synthesis[] = {-0.0645388812f, -0.0406894162f, 0.418092281f,  0.788485587f,
                                 0.418092281f,   -0.0406894162f, -0.0645388812f};

const float k10x18Analysis[] = {0.0288525652f, 8.24447852e-05f, -0.157526448f, 0.0767904893f,   0.758907735f,
                                0.758907735f,  0.0767904893f,   -0.157526448f, 8.24447852e-05f, 0.0288525652f};
const float k10x18Synthesis[] = {0.000954415882f, -2.72719626e-06f, -0.00945246313f, -0.00252803741f, 0.0308337342f,
                                 -0.0137651348f,  -0.0856611878f,   0.163368538f,    0.623359621f,    0.623359621f,
                                 0.163368538f,    -0.0856611878f,   -0.0137651348f,  0.0308337342f,   -0.00252803741f,
                                 -0.00945246313f, -2.72719626e-06f, 0.000954415882f};

const float kSym9Low[] = {0.0282203667f, -0.0603941269f, -0.0738818794f, 0.413947523f, 0.798429787f,
                          0.413947523f,  -0.0738818794f, -0.0603941269f, 0.0282203667f};

const float k10x10Analysis[] = {0.0269134194f, -0.0323033519f, -0.241109818f, 0.0541004203f,  0.899506092f,
                                0.899506092f,  0.0541004203f,  -0.241109818f, -0.0323033519f, 0.0269134194f};
const float k10x10Synthesis[] = {0.0198435448f, 0.0238175988f, -0.0232578404f, 0.14557074f,   0.541132748f,
                                 0.541132748f,  0.14557074f,   -0.0232578404f, 0.0238175988f, 0.0198435448f};

const float k13x11Analysis[] = {-0.00847282819f, 0.00375921023f, 0.0472817533f,  -0.0334750824f, -0.0688781142f,
                                0.38326925f,     0.767245173f,   0.38326925f,    -0.0688781142f, -0.0334750824f,
                                0.0472817533f,   0.00375921023f, -0.00847282819f};
const float k13x11Synthesis[] = {0.014182156f,  0.00629231567f, -0.108737364f, -0.0691627115f,
                                 0.448108613f,  0.832847595f,   0.448108613f,  -0.0691627115f,
                                 -0.108737364f, 0.00629231567f, 0.014182156f};

const float k6x10Analysis[] = {-0.129077762f, 0.0476989299f, 0.788485587f, 0.788485587f, 0.0476989299f, -0.129077762f};
const float k6x10Synthesis[] = {0.0189142283f, 0.00698949536f, -0.0672369376f, 0.13338922f,    0.615050793f,
                                0.615050793f,  0.13338922f,    -0.0672369376f, 0.00698949536f, 0.0189142283f};

// The 5/3 pair of LeGall and Tabatabai (1988), scaled likewise.
const float k5x3Analysis[] = {-0.176776692f, 0.353553385f, 1.06066012f, 0.353553385f, -0.176776692f};
const float k5x3Synthesis[] = {0.353553385f, 0.707106769f, 0.353553385f};

const float k2x6Analysis[] = {0.707106769f, 0.707106769f};
const float k2x6Synthesis[] = {-0.0883883461f, 0.0883883461f, 0.707106769f,
                               0.707106769f,   0.0883883461f, -0.0883883461f};

const float k9x3Analysis[] = {0.0331456289f, -0.0662912577f, -0.176776692f,  0.419844657f, 0.994368911f,
                              0.419844657f,  -0.176776692f,  -0.0662912577f, 0.0331456289f};
const float k9x3Synthesis[] = {0.353553385f, 0.707106769f, 0.353553385f};

const float kDenoiseAnalysis[] = {0.0528657697f, -0.0334184729f, -0.0930692628f, 0.386971861f, 0.787513793f,
                                  0.386971861f,  -0.0930692628f, -0.0334184729f, 0.0528657697f};
const float kDenoiseSynthesis[] = {-0.0867483169f, -0.0548369251f, 0.440301716f,  0.816780627f,
                                   0.440301716f,   -0.0548369251f, -0.0867483169f};

constexpr int kPeriodic = 0;
constexpr int kMirror = 1;

// Lets a set read like a row of a table: extension, analysis low-pass with its first tap, synthesis low-pass likewise.
template <int kAnalysis, int kSynthesis>
WaveletFilterSet Biorthogonal(const float (&analysis)[kAnalysis], int analysisFirst,
                              const float (&synthesis)[kSynthesis], int synthesisFirst) {
    return WaveletFilterSet(kMirror, analysis, kAnalysis, analysisFirst, synthesis, kSynthesis, synthesisFirst);
}

template <int kTaps>
WaveletFilterSet Orthogonal(int extension, const float (&taps)[kTaps], int first) {
    return WaveletFilterSet(extension, taps, kTaps, first, nullptr, 0, 0);
}

CLARIBOX_AT_LOAD(4) const processor::ConstantGroup constantsBeforeSets;

} // namespace

CLARIBOX_AT_LOAD(4) WaveletFilterSet FilterSetHaar = Orthogonal(kPeriodic, kHaarLow, 0);
CLARIBOX_AT_LOAD(4) WaveletFilterSet FilterSetDaub4 = Orthogonal(kPeriodic, kDaub4Low, 0);
CLARIBOX_AT_LOAD(4) WaveletFilterSet FilterSetDaub6 = Orthogonal(kPeriodic, kDaub6Low, 0);
CLARIBOX_AT_LOAD(4) WaveletFilterSet FilterSetDaub8 = Orthogonal(kPeriodic, kDaub8Low, 0);
CLARIBOX_AT_LOAD(4) WaveletFilterSet FilterSetCdf97 = Biorthogonal(kCdf97Analysis, -4, kCdf97Synthesis, -3);
CLARIBOX_AT_LOAD(4) WaveletFilterSet FilterSet10x18 = Biorthogonal(k10x18Analysis, -4, k10x18Synthesis, -8);
CLARIBOX_AT_LOAD(4) WaveletFilterSet FilterSetSym9 = Orthogonal(kMirror, kSym9Low, -4);
CLARIBOX_AT_LOAD(4) WaveletFilterSet FilterSetCdf97b = Biorthogonal(kCdf97Analysis, -4, kCdf97Synthesis, -3);
CLARIBOX_AT_LOAD(4) WaveletFilterSet FilterSet10x10 = Biorthogonal(k10x10Analysis, -4, k10x10Synthesis, -4);
CLARIBOX_AT_LOAD(4) WaveletFilterSet FilterSetCdf97c = Biorthogonal(kCdf97Analysis, -4, kCdf97Synthesis, -3);
CLARIBOX_AT_LOAD(4) WaveletFilterSet FilterSet13x11 = Biorthogonal(k13x11Analysis, -6, k13x11Synthesis, -5);
CLARIBOX_AT_LOAD(4) WaveletFilterSet FilterSet6x10 = Biorthogonal(k6x10Analysis, -2, k6x10Synthesis, -4);
CLARIBOX_AT_LOAD(4) WaveletFilterSet FilterSet5x3 = Biorthogonal(k5x3Analysis, -2, k5x3Synthesis, -1);
CLARIBOX_AT_LOAD(4) WaveletFilterSet FilterSet2x6 = Biorthogonal(k2x6Analysis, 0, k2x6Synthesis, -2);
CLARIBOX_AT_LOAD(4) WaveletFilterSet FilterSet9x3 = Biorthogonal(k9x3Analysis, -4, k9x3Synthesis, -1);
CLARIBOX_AT_LOAD(4) WaveletFilterSet FilterSetDenoise = Biorthogonal(kDenoiseAnalysis, -4, kDenoiseSynthesis, -3);
