// The parts of a real transform that are not complex transforms: the step between the spectra of half lines and of the
// whole, and the definition for an odd length.
#pragma once

#include "dft/base/complex.h"

namespace dft {

/// From the forward transform a[] of the `half` complex elements that a real line of twice as many elements makes up,
/// to that line's native layout, with the table `unpack_forward`; or backward with `unpack_backward`, from the native
/// layout to what the complex backward transform turns into the line. In place or not. For a length of 4 or less the
/// table is not looked at.
///
/// With E and O the spectra of the even and odd elements, a = E + i O, where conj E[half - k] = E[k] and the same for
/// O. So E[k] = (a[k] + conj a[half - k]) / 2, O[k] = (a[k] - conj a[half - k]) / 2i, and the spectrum of the line is
/// E[k] + w[k] O[k].
template <Direction direction, typename Real>
void StepBetweenHalves(int half, const Complex<Real>* table, const Complex<Real>* a, Complex<Real>* result) {
    // The inverse has a factor 1/2 in front of sums; an unscaled backward transform leaves it out.
    constexpr Real kWeight = direction == kForward ? 1 : 2;
    result[0] = {a[0].re + a[0].im, a[0].re - a[0].im};
    for (int k = 1, mirrored = half - 1; k < mirrored; ++k, --mirrored) {
        const Complex<Real> x = a[k];
        const Complex<Real> y = a[mirrored];
        const Real u = x.re - y.re;
        const Real v = x.im + y.im;
        const Real p = table[k].im * u + table[k].re * v;
        const Real q = table[k].im * v - table[k].re * u;
        result[k] = {kWeight * y.re + p, q - kWeight * y.im};
        result[mirrored] = {kWeight * x.re - p, q - kWeight * x.im};
    }
    if (half % 2 == 0) {
        result[half / 2] = {kWeight * a[half / 2].re, -kWeight * a[half / 2].im};
    }
}

/// The definition for an odd `length` between real elements and their spectrum in the native layout, in place or not.
/// Mirrored elements are real parts and imaginary parts of the spectrum times a cosine and a sine, so that sums and
/// differences are formed once and half of the products remain. `roots` has the circle of `length` roots; `pairs` has
/// room for length - 1 elements.
template <Direction direction, typename Real>
void TransformOddDirectly(int length, const Complex<Real>* roots, const Real* input, Real* output, Real* pairs) {
    const int half = length / 2;
    const Real first = input[0];
    Real total = first;
    for (int k = 1; k <= half; ++k) {
        Real* const pair = pairs + 2 * (k - 1);
        if (direction == kForward) {
            pair[0] = input[k] + input[length - k];
            pair[1] = input[k] - input[length - k];
        } else { // of the two conjugate elements k and length - k
            pair[0] = 2 * input[2 * k - 1];
            pair[1] = 2 * input[2 * k];
        }
        total += pair[0];
    }
    output[0] = total;
    for (int j = 1; j <= half; ++j) {
        Real cosines = first;
        Real sines = 0;
        int angle = 0;
        for (int k = 0; k < half; ++k) {
            angle += j;
            angle -= angle >= length ? length : 0;
            cosines += pairs[2 * k] * roots[angle].re;
            sines += pairs[2 * k + 1] * roots[angle].im;
        }
        output[direction == kForward ? 2 * j - 1 : j] = direction == kForward ? cosines : cosines + sines;
        output[direction == kForward ? 2 * j : length - j] = direction == kForward ? sines : cosines - sines;
    }
}

} // namespace dft
