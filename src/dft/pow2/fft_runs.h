// How one line runs through a power-of-two plan: one form a vector class.
#pragma once

#include "dft/base/kernels.h"
#include "dft/pow2/fft_plan.h"

namespace dft {

template <typename Real>
struct FftRuns {
    /// Unscaled run of a good plan, from input to output, which are the same or do not overlap. `scratch` holds
    /// 2^order elements, 2^15 at the most; null below order 4.
    void (*line[2])(const BasicFftPlan<Real>& plan, const Complex<Real>* input, Complex<Real>* output,
                    Complex<Real>* scratch);
};

CLARIBOX_DFT_KERNELS(FftRuns, kFftRuns, ActiveFftRuns)

} // namespace dft
