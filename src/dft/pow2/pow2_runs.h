// How power-of-two transforms run: one form a vector class, each for one line and for several side by side.
#pragma once

#include "dft/base/kernels.h"
#include "dft/base/lines.h"
#include "dft/base/record.h"

namespace dft {

/// The members give what the routine slots of a record give (ordering, scale factor and table of the record, tuning of
/// the variant in force), bit for bit the same for one line and for a batch (layout: plans/plan_runs.h).
template <typename Real>
struct Pow2Runs {
    int lanes; ///< lines of a batch
    /// One line in place. `scratch` holds `length` elements on a multiple of 64 bytes.
    void (*line[2])(const DftDescriptor& record, Complex<Real>* data, Complex<Real>* scratch);
    /// A batch in place; both arrays of `lanes` times `length` elements, on a multiple of 64 bytes.
    void (*batch[2])(const DftDescriptor& record, Real* data, Real* scratch);
    /// Whether `line` has vectors along a line of 2^log2_length elements: it is then faster than a batch of lines that
    /// must be brought together first.
    bool (*has_vectors)(int log2_length);
    /// `lanes` adjacent columns (lineStride 1, any elementStride) in place, where they lie, of a record with ordering
    /// DFT_ORDERED, scale factor 1 and 16 elements or more. `scratch` as for a batch.
    void (*columns[2])(const DftDescriptor& record, const Lines<Real>& columns, Real* scratch);
};

CLARIBOX_DFT_KERNELS(Pow2Runs, kPow2Runs, ActivePow2Runs)

} // namespace dft
