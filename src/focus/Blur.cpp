// Blurs on purpose: out of focus, and along a line of motion.
#include <claribox/CImageFocus.h>
#include <claribox/ChFunctions.h>

#include "PlaneSet.h"

#include <initializer_list>

void CImageFocus::Blur(unsigned char* pixels, FoPixelFmt format, int pitch) {
    focus::FoPlaneSet planes(m_Width, m_Height);
    planes.Split(pixels, format, pitch);
    ChMatrix<float> kernel;
    // A bell twice as wide as the kernel's half: the edge still weighs 0.84 of the middle, close to a box with soft
    // corners.
    ChMakeGaussianPSF(kernel, 2 * m_Radius + 1, 2 * m_Radius + 1, 2.0 * m_Radius);
    for (unsigned char* const plane : {planes.First(), planes.Second(), planes.Third()}) {
        ConvolvePlane(plane, kernel);
    }
    planes.Merge(pixels, format, pitch);
}

void CImageFocus::MotionBlur(unsigned char* pixels, FoPixelFmt format, int pitch) {
    focus::FoPlaneSet planes(m_Width, m_Height);
    planes.Split(pixels, format, pitch);
    ChMatrix<float> kernel;
    ChMakeMotionPSF(kernel, m_MotionLength, m_MotionDegree);
    for (unsigned char* const plane : {planes.First(), planes.Second(), planes.Third()}) {
        ConvolvePlane(plane, kernel);
    }
    planes.Merge(pixels, format, pitch);
}
