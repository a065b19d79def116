// Tables of kernels, filled by each vector class for both precisions, and batches, which most kernels take.
//
// A batch holds element k of several lines together: BatchLanes<Real>() real parts, then as many imaginary parts. A
// batch of one line is an ordinary array of complex elements.
#pragma once

#include "dft/base/complex.h"
#include "simd/VectorClass.h"

namespace dft {

/// Lines of a batch: as many as a vector of the class in force has lanes; one in the portable class.
template <typename Real>
int BatchLanes() {
    static constexpr int kBytes[] = {0, 16, 32, 64};
    const int lanes = kBytes[static_cast<int>(simd::ActiveVectorClass())] / static_cast<int>(sizeof(Real));
    return lanes > 0 ? lanes : 1;
}

} // namespace dft

/// Declares `const Table<float> nameSingle` and `const Table<double> nameDouble` in the namespace of each vector class,
/// and `const Table<Real>& Accessor<Real>()`, the one of the class in force. Stands in namespace dft.
#define CLARIBOX_DFT_KERNELS(Table, name, Accessor)                                                                    \
    CLARIBOX_PER_VECTOR_CLASS(Table<float>, name##Single, Accessor##Single)                                            \
    CLARIBOX_PER_VECTOR_CLASS(Table<double>, name##Double, Accessor##Double)                                           \
    template <typename Real>                                                                                           \
    const Table<Real>& Accessor() {                                                                                    \
        if constexpr (kPrecision<Real> == 0) {                                                                         \
            return Accessor##Single();                                                                                 \
        } else {                                                                                                       \
            return Accessor##Double();                                                                                 \
        }                                                                                                              \
    }
