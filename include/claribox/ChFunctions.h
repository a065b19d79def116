// Exported free functions: builders of point spread functions and of the deconvolution kernel.
#pragma once

#include "ChMatrix.h"
#include "Export.h"

/// Fills `psf`, made `rows` by `cols`, with the bell 2^-(r^2 / sigma^2), r being the distance from the middle in
/// pixels. `sigma` is the half width at half maximum, not a standard deviation. Neither thresholds nor normalises. A
/// sigma of 0 gives NaN on the centre and 0 elsewhere.
CLARIBOX_API void ChMakeGaussianPSF(ChMatrix<float>& psf, int rows, int cols, double sigma);

/// Fills `psf`, made square with side 2*length+1, with a ray from its centre whose weight falls as
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
