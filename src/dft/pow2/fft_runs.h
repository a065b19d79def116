// How one line runs through a power-of-two plan: one form a vector class.
#pragma once

#include "dft/plans/dft_plan.h"
#include "dft/plans/plan_runs.h"
#include "simd/VectorClass.h"

namespace dft {

template <typename Real>
struct FftRuns {
    /// Unscaled run of a good plan, from input to output, which are the same or do not overlap. `scratch` holds
    /// 2^order elements, 2^15 at the most; null below order 4.
    void (*line[2])(const BasicFftPlan<Real>& plan, const Complex<Real>* input, Complex<Real>* output,
                    Complex<Real>* scratch);
};

CLARIBOX_VECTOR_VARIANTS(FftRuns<float>, kFftRunsSingle, ActiveFftRunsSingle)
CLARIBOX_VECTOR_VARIANTS(FftRuns<double>, kFftRunsDouble, ActiveFftRunsDouble)

/// The one in force for the precision of a plan.
inline const FftRuns<float>& ActiveFftRuns(const FftPlan&) {
    return ActiveFftRunsSingle();
}
inline const FftRuns<double>& ActiveFftRuns(const FftPlanDouble&) {
    return ActiveFftRunsDouble();
}

} // namespace dft
