// Restoration of planes by an inverse spectrum, and the out-of-focus case of it.
#include <claribox/CImageFocus.h>
#include <claribox/ChFunctions.h>

#include "ExtendedPicture.h"

#include <initializer_list>
#include <memory>

void CImageFocus::InvFilter(unsigned char* plane, unsigned char* scratch, DFT_Buffer& inverse) {
    const focus::ExtendedSize extended(m_Width, m_Height);
    ChEntendBuffer(plane, m_Width, m_Height, scratch, FoTransformMargin);
    ChInverseFilter(scratch, extended.width, extended.height, inverse);
    ChCropBuffer(plane, m_Width, m_Height, scratch, FoTransformMargin);
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
