// Restoration of planes by an inverse spectrum, and the out-of-focus case of it.
#include <claribox/CImageFocus.h>
#include <claribox/ChFunctions.h>

#include "ExtendedPicture.h"
#include "kernels/spectra/SpectrumPadding.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <vector>

namespace focus {

void FilterInMargin(kernels::InverseFilter& filter, const ExtendedSize& extended, unsigned char* plane,
                    unsigned char* scratch, const DFT_Buffer& inverse) {
    const int width = extended.width - 2 * FoTransformMargin;
    const int height = extended.height - 2 * FoTransformMargin;
    if (width <= 0 || height <= 0) { // there is no pixel to repeat
        return;
    }
    std::vector<unsigned char> row(static_cast<std::size_t>(extended.width));
    for (int y = 0; y < extended.height; ++y) {
        const int nearest = std::clamp(y - FoTransformMargin, 0, height - 1);
        kernels::ExtendRow(plane + static_cast<std::ptrdiff_t>(nearest) * width, width, row.data(), FoTransformMargin);
        filter.Take(row.data());
    }
    filter.Restore(inverse.m_Spectrum, scratch);
    ChCropBuffer(plane, width, height, scratch, FoTransformMargin);
}

} // namespace focus

void CImageFocus::InvFilter(unsigned char* plane, unsigned char* scratch, DFT_Buffer& inverse) {
    const focus::ExtendedSize extended(m_Width, m_Height);
    if (extended.Count() > 0) {
        kernels::InverseFilter filter(extended.width, extended.height);
        focus::FilterInMargin(filter, extended, plane, scratch, inverse);
    }
}

// The alternative to DeBlur_Deconv in the frequency domain. DeBlur never takes it, and no other operation calls it: it
// is kept for hosts that reach private operations.
void CImageFocus::DeBlur_Inv(unsigned char* first, unsigned char* second, unsigned char* third) {
    const focus::ExtendedSize extended(m_Width, m_Height);
    ChMatrix<float> psf;
    const int side = kernels::WrapAdd(kernels::WrapMultiply(2, m_Radius), 1);
    ChMakeCirclePSF(psf, side, 0.66 * m_Radius); // given, as in DeBlur
    const auto scratch = std::make_unique_for_overwrite<unsigned char[]>(extended.Count());
    m_NoiseFactor = 0.04f; // given: relative noise power; InverseFilterTest.FocusDeblurEqualsItsDefinition pins both
    DFT_Buffer inverse(extended.Count(), 0);
    focus::MakeInverse(inverse, psf, extended, m_NoiseFactor);
    for (unsigned char* const plane : {first, second, third}) {
        InvFilter(plane, scratch.get(), inverse);
    }
}
