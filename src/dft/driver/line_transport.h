// Gathering lines into batches (base/kernels.h) and scattering them back.
#pragma once

#include "dft/base/kernels.h"
#include "dft/base/lines.h"

#include <cstddef>

namespace dft {

/// No member touches an element outside the lines it is given.
template <typename Real>
struct LineTransport {
    /// Copies the lines, at most BatchLanes<Real>(), to a batch on a multiple of 64 bytes. Lanes without a line become
    /// 0.
    void (*gather)(const Lines<Real>& lines, Real* batch);
    /// Copies the lines back, each part times `scale` unless that is 1.
    void (*scatter)(Real* batch, const Lines<Real>& lines, Real scale);
    /// Scatters `done`, then gathers `next` into the same batch. Columns are exchanged row by row: if every row lies
    /// in a page of its own, misses of the translation buffer dominate. The two share no element.
    void (*exchange)(Real* batch, const Lines<Real>& done, const Lines<Real>& next, Real scale);
};

CLARIBOX_DFT_KERNELS(LineTransport, kLineTransport, ActiveLineTransport)

} // namespace dft
