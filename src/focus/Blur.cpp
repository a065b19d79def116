// Blurs on purpose: out of focus, and along a line of motion.
#include <claribox/CImageFocus.h>
#include <claribox/ChFunctions.h>

#include "SpatialFilter.h"
#include "kernels/numbers/WrappingArithmetic.h"

void CImageFocus::Blur(unsigned char* pixels, FoPixelFmt format, int pitch) {
    ChMatrix<float> kernel;
    const int side = kernels::WrapAdd(kernels::WrapMultiply(2, m_Radius), 1);
    // A Gaussian twice as wide as the kernel's half: the edge still weighs 0.84 of the middle, close to a box with soft
    // corners.
    ChMakeGaussianPSF(kernel, side, side, 2.0 * m_Radius);
    focus::ConvolvePixels({pixels, format, pitch, m_Width, m_Height}, kernel);
}

void CImageFocus::MotionBlur(unsigned char* pixels, FoPixelFmt format, int pitch) {
    ChMatrix<float> kernel;
    ChMakeMotionPSF(kernel, m_MotionLength, m_MotionDegree);
    focus::ConvolvePixels({pixels, format, pitch, m_Width, m_Height}, kernel);
}
