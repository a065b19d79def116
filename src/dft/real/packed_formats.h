// The three layouts of the spectrum of n real elements, and the ways between them.
//
// The spectrum of a real line is conjugate-even: X[n - j] = conj X[j]. So R[j] + i I[j] for j from 0 to n / 2 is all of
// it, and I[0] is 0, as is I[n / 2] for an even n.
//
//     DFT_PACK_FULL    even  R0 0 R1 I1 .. R(n/2-1) I(n/2-1) R(n/2) 0     n + 2 elements
//                      odd   R0 0 R1 I1 .. R((n-1)/2) I((n-1)/2)          n + 1
//     DFT_PACK_TIGHT   even  R0 R1 I1 .. R(n/2-1) I(n/2-1) R(n/2)         n
//                      odd   R0 R1 I1 .. R((n-1)/2) I((n-1)/2)            n
//     DFT_PACK_NATIVE  even  R0 R(n/2) R1 I1 .. R(n/2-1) I(n/2-1)         n
//                      odd   as DFT_PACK_TIGHT                            n
//
// All methods of a real plan give and take the native layout; the others are a shuffle of it.
#pragma once

#include "dft/base/record.h"

#include <algorithm>

namespace dft {

/// Whether a line of `length` elements in this layout differs from the native one.
constexpr bool NeedsShuffle(DftCode format, int length) {
    return format == DFT_PACK_FULL || (format == DFT_PACK_TIGHT && length % 2 == 0);
}

/// Brings `line`, `length` elements in the native layout with room for the layout `format`, into that layout.
template <DftCode format, typename Real>
void ShuffleFromNative(Real* line, int length) {
    if constexpr (format == DFT_PACK_FULL) {
        if (length % 2 == 0) {
            line[length] = line[1];
            line[length + 1] = 0;
        } else {
            std::copy_backward(line + 1, line + length, line + length + 1);
        }
        line[1] = 0;
    } else if (NeedsShuffle(format, length)) {
        std::rotate(line + 1, line + 2, line + length);
    }
}

/// Copies `packed` of layout `format` into `native`, `length` elements apart from it. The imaginary parts that are 0 by
/// definition are not looked at.
template <DftCode format, typename Real>
void CopyToNative(const Real* packed, Real* native, int length) {
    native[0] = packed[0];
    const bool isFull = format == DFT_PACK_FULL;
    const Real* const pairs = packed + (isFull ? 2 : 1);
    if (length % 2 == 0) {
        native[1] = packed[isFull ? length : length - 1];
        std::copy(pairs, pairs + (length - 2), native + 2);
    } else {
        std::copy(pairs, pairs + (length - 1), native + 1);
    }
}

} // namespace dft
