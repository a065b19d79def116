// Exported free functions: builders of point spread functions and of the deconvolution kernel, and the way into the
// frequency domain and back. Exhausted memory is not reported: the call faults or throws what the global `new` throws.
// A transform that finds none does neither: what it was to fill is then undefined.
#pragma once

#include "ChMatrix.h"
#include "DFT_Buffer.h"
#include "Export.h"

#include <cstdint>

/// The largest number of elements, width times height, of a spectrum: the library and its transforms count the two
/// floats of each in 32 bits. Nothing tests it: for larger ones the counts wrap and too little is allocated.
inline constexpr std::int32_t ChMaxTransformElements = (std::int32_t{1} << 30) - 1;

/// Fills `psf`, made `rows` by `cols`, with the Gaussian 2^-(r^2 / sigma^2), r being the distance from the middle in
/// pixels. `sigma` is the half width at half maximum, not a standard deviation. Neither thresholds nor normalises. A
/// sigma of 0 gives NaN on the centre and 0 elsewhere.
CLARIBOX_API void ChMakeGaussianPSF(ChMatrix<float>& psf, int rows, int cols, double sigma);

/// Fills `psf`, made square with side 2*length+1, with a line from its centre whose weight falls as
/// exp(-d^2 / length^2). `degree` counts counter-clockwise from the right; any degree from -360 on is reduced to a full
/// turn, one below -360 keeps a negative remainder. A `length` of 0 gives a single 0. Not normalised.
CLARIBOX_API void ChMakeMotionPSF(ChMatrix<float>& psf, int length, int degree);

/// Fills `psf`, made square with side `size`, with the share of a disk of `radius` pixels that falls on each element;
/// the disk is centred on element (size/2, size/2). A disk that fits sums to 1 within rounding.
CLARIBOX_API void ChMakeCirclePSF(ChMatrix<float>& psf, int size, double radius);

/// Fills `corr`, made `rows` by `cols` (note the order of the arguments), with base^d + offset, d being the distance
/// from element (rows/2, cols/2): the correlation of two picture points.
CLARIBOX_API void ChMakeCorrecation(ChMatrix<float>& corr, int cols, int rows, double base, double offset);

/// Turns the square blur kernel `psf` into the finite Wiener filter of the same size that restores it, for a picture
/// whose neighbouring points correlate by `correlation` and carry white noise of relative power `noise`. The result
/// is symmetric and not normalised. A singular system is not reported: the kernel is then the right-hand side.
CLARIBOX_API void ChMakeDeconvMatrix(ChMatrix<float>& psf, float correlation, float noise);

/// Copies the plane `src` of `width` by `height` bytes to the middle of `dst`, (width + 2*pad) by (height + 2*pad)
/// bytes, and repeats the nearest pixel in the margin. Both planes are tightly packed; `pad` is 0 or more and may
/// exceed the plane.
CLARIBOX_API void ChEntendBuffer(unsigned char* src, int width, int height, unsigned char* dst, int pad);

/// The reverse: copies the middle of `src`, (width + 2*pad) by (height + 2*pad) bytes, to `dst`, `width` by `height`.
CLARIBOX_API void ChCropBuffer(unsigned char* dst, int width, int height, unsigned char* src, int pad);

/// Fills `otf`, which has room for width*height elements, with the transfer function of the kernel `psf`, its element
/// (rows/2, cols/2) being the origin. Element (0, 0) becomes the kernel's sum. Of a kernel that should not fit into
/// `width` by `height`, as many rows or columns count as there is room for, with the origin in their middle.
CLARIBOX_API void ChPSF2OTF(DFT_Buffer& otf, ChMatrix<float> psf, int width, int height);

/// Replaces each of the width*height elements H of `otf` by conj(H) / (|H|^2 + noise), the filter of Wiener
/// ("Extrapolation, Interpolation, and Smoothing of Stationary Time Series", 1949) for noise of constant relative power
/// `noise`. A denominator below 0.01 is raised by 0.01.
CLARIBOX_API void ChInverseOTF(DFT_Buffer& otf, int width, int height, float noise);

/// Filters the tightly packed plane of `width` by `height` bytes, in place, by the spectrum `otf` of the same size,
/// which is only read: several planes may be filtered at once with one spectrum. Real parts of the result are rounded
/// and clamped as by KernelTable.PackComplexToU8. Needs 8 bytes of memory a pixel.
CLARIBOX_API void ChInverseFilter(unsigned char* plane, int width, int height, DFT_Buffer& otf);

/// Replaces the tightly packed plane of `width` by `height` bytes by its power spectrum: log(power + 1) on a scale on
/// which the largest value is 254 or 255. The zero frequency stays at the top left. A black plane stays black.
CLARIBOX_API void ChShowPowerSpectrum(unsigned char* plane, int width, int height);

/// Guesses the direction of motion blur in the pixels with x from left+1 up to and excluding right-1 and y from top+1
/// up to and excluding bottom-1 of a tightly packed plane with rows of `width` bytes: the degree, 0 to 359, along which
/// neighbouring pixels predict each other best, the lowest of equals. 0 if there are no such pixels. `height` is not
/// read, and a region wider than the plane reads on in the rows below: `left` and `top` are 0 or more, and sample
/// (right - 1, bottom - 1) lies inside the plane. Nothing is written.
CLARIBOX_API int ChGuessMotionDirection(unsigned char* plane, int width, int height, int left, int top, int right,
                                        int bottom);
