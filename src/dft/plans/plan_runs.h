// How the methods of a general plan run: one form a vector class, each for one line and for several side by side.
#pragma once

#include "dft/base/kernels.h"
#include "dft/plans/dft_plan.h"

namespace dft {

/// Lines side by side ("a batch"): element k of all lines stands together, `lanes` real parts, then `lanes` imaginary
/// parts, so that a batch of one line is an ordinary array of complex elements. A batch run gives each line the very
/// bytes that its single run gives.
template <typename Real>
struct PlanRuns {
    int lanes; ///< lines of a batch
    /// Unscaled run of a plan whose tag and pointers are good, on one line. In place or not. `work` starts on a
    /// multiple of 16 bytes and holds `work_bytes` less what was lost by that. Plans for powers of two and for lengths
    /// below 5 are included.
    void (*line[2])(const BasicDftPlan<Real>& plan, const Complex<Real>* input, Complex<Real>* output, void* work);
    /// The same on a batch: arrays of `lanes` times the size, on a multiple of 64 bytes.
    void (*batch[2])(const BasicDftPlan<Real>& plan, const Real* input, Real* output, void* work);
};

CLARIBOX_DFT_KERNELS(PlanRuns, kPlanRuns, ActivePlanRuns)

} // namespace dft
