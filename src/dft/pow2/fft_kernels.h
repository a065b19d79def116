// The kernels of a plan of a power of two.
#pragma once

#include "dft/base/kernels.h"
#include "dft/pow2/fft_plan.h"

namespace dft {

template <typename Real>
struct FftKernels {
    /// Unscaled run of a good plan, from input to output, which are the same or do not overlap. `scratch` holds
    /// 2^order elements, 2^15 at the most; null below order 4.
    void (*line[2])(const BasicFftPlan<Real>& plan, const Complex<Real>* input, Complex<Real>* output,
                    Complex<Real>* scratch);
    /// The same of a batch, in arrays on a multiple of 64 bytes.
    void (*batch[2])(const BasicFftPlan<Real>& plan, const Real* input, Real* output, Real* scratch);
};

CLARIBOX_DFT_KERNELS(FftKernels, kFftKernels, ActiveFftKernels)

} // namespace dft
