// Blurs on purpose: out of focus, and along a line of motion.
#include <claribox/CImageFocus.h>
#include <claribox/ChFunctions.h>

#include "PlaneSet.h"
#include "kernels/numbers/WrappingArithmetic.h"

void CImageFocus::Blur(unsigned char* pixels, FoPixelFmt format, int pitch) {
    ChMatrix<float> kernel; // outlives the planes
    focus::FoPlaneSet planes(m_Width, m_Height);
    planes.Split(pixels, format, pitch);
    const int side = kernels::WrapAdd(kernels::WrapMultiply(2, m_Radius), 1);
    // A Gaussian twice as wide as the kernel's half: the edge still weighs 0.84 of the middle, close to a box with soft
    // corners.
    ChMakeGaussianPSF(kernel, side, side, 2.0 * m_Radius);
    for (unsigned char* const plane : planes.All()) {
        ConvolvePlane(plane, kernel);
    }
    planes.Merge(pixels, format, pitch);
}

void CImageFocus::MotionBlur(unsigned char* pixels, FoPixelFmt format, int pitch) {
    ChMatrix<float> kernel;
    focus::FoPlaneSet planes(m_Width, m_Height);
    planes.Split(pixels, format, pitch);
    ChMakeMotionPSF(kernel, m_MotionLength, m_MotionDegree);
    for (unsigned char* const plane : planes.All()) {
        ConvolvePlane(plane, kernel);
    }
    planes.Merge(pixels, format, pitch);
}
