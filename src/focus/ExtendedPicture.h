// Filtering in the frequency domain: planes get a margin, since the transform wraps around at the edges.
#pragma once

#include <claribox/CImageFocus.h>
#include <claribox/ChFunctions.h>

#include "kernels/numbers/WrappingArithmetic.h"
#include "kernels/spectra/InverseFilter.h"
#include "kernels/spectra/PictureTransform.h"

namespace focus {

/// The sizes of a plane with its margin.
struct ExtendedSize {
    ExtendedSize(int pictureWidth, int pictureHeight)
        : width(kernels::WrapAdd(pictureWidth, 2 * FoTransformMargin)),
          height(kernels::WrapAdd(pictureHeight, 2 * FoTransformMargin)) {}

    std::uint32_t Count() const { return kernels::ElementCount(width, height); }

    int width;
    int height;
};

/// Fills `inverse`, of the extended size, with the spectrum that undoes the blur kernel `psf` under noise of relative
/// power `noise`. `psf` is normalised on the way; an empty one gives a spectrum of zeros.
inline void MakeInverse(DFT_Buffer& inverse, ChMatrix<float>& psf, const ExtendedSize& size, float noise) {
    if (psf.Count() > 0) { // of a negative radius or length there is no kernel
        psf.Normalize();
    }
    ChPSF2OTF(inverse, psf, size.width, size.height);
    ChInverseOTF(inverse, size.width, size.height, noise);
}

/// Restores a plane, of the picture's size, by `inverse`. What CImageFocus::InvFilter does with its own filter;
/// `filter`, of the extended size, may serve several planes one after the other.
void FilterInMargin(kernels::InverseFilter& filter, const ExtendedSize& extended, unsigned char* plane,
                    unsigned char* scratch, const DFT_Buffer& inverse);

} // namespace focus
