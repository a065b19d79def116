#include "claribox/ChFunctions.h"

#include "kernels/numbers/RoundToFloat.h"
#include "kernels/spectra/PictureTransform.h"

#include <cmath>

namespace {

/// Replaces each real part by log(power + 1) and returns the largest, which is not rounded to float.
double TakeLogarithms(ChComplex* spectrum, std::uint32_t count) {
    double peak = -1.0;
    for (std::uint32_t k = 0; k < count; ++k) {
        const double re = static_cast<double>(spectrum[k].re);
        const double im = static_cast<double>(spectrum[k].im);
        const double value = std::log((re * re + 1.0) + im * im);
        spectrum[k].re = kernels::RoundToFloat(value);
        if (value > peak) {
            peak = value;
        }
    }
    return peak;
}

} // namespace

// The zero frequency stays at the top left: required (SpectrumTest.PowerSpectra). Hosts that want it in the centre
// shift the bytes. No shifted copy of the spectrum is made in a matrix, since nobody could see it.
void ChShowPowerSpectrum(unsigned char* plane, int width, int height) {
    const std::uint32_t count = kernels::ElementCount(width, height);
    DFT_Buffer work(count, 0);
    KernelTable.ExpandU8ToComplex(plane, work.m_Spectrum, count);
    kernels::PictureTransform(width, height).Forward(work.m_Spectrum);
    const double peak = TakeLogarithms(work.m_Spectrum, count);
    for (std::uint32_t k = 0; k < count; ++k) {
        // A black plane has a peak of 0; its pixels stay 0 though 0/0 is not a number. Truncated, not rounded: the
        // peak's own pixel is 254 where its float lies below it.
        const double share = peak > 0.0 ? static_cast<double>(work.m_Spectrum[k].re) / peak : 0.0;
        plane[k] = static_cast<unsigned char>(static_cast<int>(share * 255.0));
    }
}
