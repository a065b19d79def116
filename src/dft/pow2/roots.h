// The roots of unity that all tables of a plan are cut from.
#pragma once

#include "dft/base/complex.h"

namespace dft {

/// Fills roots[k] = exp(-2 pi i k / count) for k below `count`, at least 1. Only a part of the circle, an eighth at the
/// least, is computed; the rest follows by symmetry, so that mirrored roots have the very same digits. Values are
/// computed one precision wider than they are kept.
template <typename Real>
void FillRoots(Complex<Real>* roots, int count);

} // namespace dft
