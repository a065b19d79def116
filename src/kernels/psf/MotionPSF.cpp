#include "claribox/ChFunctions.h"

#include "kernels/numbers/RoundToFloat.h"
#include "kernels/numbers/WrappingArithmetic.h"
#include "kernels/psf/Pif.h"

#include <cmath>

using kernels::RoundToFloat;

namespace {

/// One step along the motion line in pixels, and where the sampling ends, counted in steps.
struct MotionLine {
    float stepX;
    float stepY;
    float end;
};

// Every float here is a required rounding: the kernel's elements are found by truncating multiples of the step.
// PointSpreadTest.MotionKernelsAgreeBitForBit pins them.
MotionLine TraceLine(int length, int degree) {
    const int angle = kernels::WrapAdd(degree, 360) % 360; // required to stay negative below -360 (PointSpreadTest)
    const int halfTurn = angle % 180;
    const float theta = RoundToFloat(halfTurn / 180.0 * static_cast<double>(kernels::PIF));
    const double sine = std::sin(static_cast<double>(theta));
    const double cosine = std::cos(static_cast<double>(theta));
    // The end lies `length` above or below the centre for every angle but the horizontal one.
    const float reach = halfTurn == 0 ? RoundToFloat(length) : RoundToFloat(length / std::fabs(sine));
    // Adding one half and truncating is no rounding to nearest for a negative cosine, so that the second quadrant runs
    // a little steeper than the first. Required; PointSpreadTest pins it at 135 degrees.
    double endX = std::trunc(cosine * static_cast<double>(reach) + 0.5);
    double endY = -std::trunc(sine * static_cast<double>(reach) + 0.5);
    if (angle >= 180) {
        endX = -endX;
        endY = -endY;
    }
    // A reach of 0 makes both steps NaN, and no sample then falls inside.
    return {RoundToFloat(endX / static_cast<double>(reach)), RoundToFloat(endY / static_cast<double>(reach)),
            RoundToFloat(static_cast<double>(reach) + 2.0)};
}

} // namespace

void ChMakeMotionPSF(ChMatrix<float>& psf, int length, int degree) {
    const int side = kernels::WrapAdd(kernels::WrapMultiply(2, length), 1);
    psf.Create(side, side);
    psf.Zero();
    const MotionLine line = TraceLine(length, degree);
    const double lengthSquared = kernels::WrapMultiply(length, length);
    // A real counter, since at shallow angles the line of a long kernel has more samples than an int can count.
    for (double k = 0.0; k < static_cast<double>(line.end); k += 1.0) {
        const double p = k * static_cast<double>(line.stepX);
        const double q = k * static_cast<double>(line.stepY);
        const double x = std::trunc(p) + length;
        const double y = std::trunc(q) + length;
        if (x >= 0.0 && x < side && y >= 0.0 && y < side) { // false for NaN, so that the conversions are defined
            // Two samples may meet on one element; the later one stays.
            psf.At(static_cast<int>(y), static_cast<int>(x)) =
                static_cast<float>(std::exp(-(p * p + q * q) / lengthSquared));
        }
    }
}
