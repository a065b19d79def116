// How the threaded forms run the parts of one line: one form a vector class.
#pragma once

#include "dft/base/kernels.h"
#include "dft/pow2/pow2_form.h"

namespace dft {

/// A line in 2^levels pieces, each of 16 elements or more, with the spectrum in bit-reversed order and the factor of
/// the direction applied. `scratch` holds as many elements as the line, on a multiple of 64 bytes, and connects the two
/// members: forward the levels come first, backward the pieces.
template <typename Real>
struct Pow2Pieces {
    /// The radix-2 passes that take the whole line to pieces, or make it of them.
    void (*levels[2])(const Pow2Form<Real>& form, Complex<Real>* data, Complex<Real>* scratch, int levels);
    /// All passes of one piece. Pieces may run at once.
    void (*piece[2])(const Pow2Form<Real>& form, Complex<Real>* data, Complex<Real>* scratch, int levels, int piece);
};

CLARIBOX_DFT_KERNELS(Pow2Pieces, kPow2Pieces, ActivePow2Pieces)

} // namespace dft
