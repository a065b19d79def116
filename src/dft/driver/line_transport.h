// Lines of an array, and their way into batches (plans/plan_runs.h) and back: one form a vector class.
#pragma once

#include "dft/base/kernels.h"
#include "dft/base/lines.h"

#include <cstddef>

namespace dft {

/// No member touches an element that is not of the lines it is given.
template <typename Real>
struct LineTransport {
    /// Copies the lines, at most BatchLanes<Real>(), to a batch on a multiple of 64 bytes. Lanes without a line become
    /// 0.
    void (*gather)(const Lines<Real>& lines, Real* batch);
    /// Copies the lines back, each part times `scale` unless that is 1.
    void (*scatter)(Real* batch, const Lines<Real>& lines, Real scale);
    /// Scatters `done`, then gathers `next` into the same batch. Columns come and go row by row: where every row lies
    /// in a page of its own, the misses of the translation buffer cost more than all else. The two share no element.
    void (*exchange)(Real* batch, const Lines<Real>& done, const Lines<Real>& next, Real scale);
};

CLARIBOX_DFT_KERNELS(LineTransport, kLineTransport, ActiveLineTransport)

} // namespace dft
