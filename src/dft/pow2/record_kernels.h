// The kernels of a record's power-of-two transform: one line, several lines, and the parts of a line.
#pragma once

#include "dft/base/kernels.h"
#include "dft/base/lines.h"
#include "dft/pow2/schedule.h"

namespace dft {

/// A transform gives the same bytes by each of the first three, ordering and scale factor included. Scratch arrays hold
/// as many elements as the data, on a multiple of 64 bytes.
template <typename Real>
struct Pow2Kernels {
    /// One line in place, at any address.
    void (*line[2])(const Pow2Schedule<Real>& schedule, Complex<Real>* data, Complex<Real>* scratch);
    /// A batch in place, on a multiple of 64 bytes.
    void (*batch[2])(const Pow2Schedule<Real>& schedule, Real* data, Real* scratch);
    /// As many adjacent columns as a batch has lines (lineStride 1) in place, where they lie: natural order, no scale
    /// factor, 16 elements or more. `scratch` as for a batch.
    void (*columns[2])(const Pow2Schedule<Real>& schedule, const Lines<Real>& columns, Real* scratch);
    /// Whether `line` has vectors within a line of 2^log2_length elements: faster than gathering batches.
    bool (*has_vectors)(int log2_length);

    /// One line in 2^levels sub-transforms of 16 elements or more, which may run at once, with the spectrum in
    /// bit-reversed order: forward, the radix-2 passes over the whole line come first, backward last. `scratch`
    /// connects the two.
    void (*levels[2])(const Pow2Schedule<Real>& schedule, Complex<Real>* data, Complex<Real>* scratch, int levels);
    void (*subtransform[2])(const Pow2Schedule<Real>& schedule, Complex<Real>* data, Complex<Real>* scratch, int levels,
                            int number);
};

CLARIBOX_DFT_KERNELS(Pow2Kernels, kPow2Kernels, ActivePow2Kernels)

} // namespace dft
