// Tables of kernels: what each vector class fills for both precisions.
#pragma once

#include "dft/base/complex.h"
#include "simd/VectorClass.h"

/// Declares `const Table<float> nameSingle` and `const Table<double> nameDouble` in the namespace of each vector class,
/// and `const Table<Real>& Accessor<Real>()`, the one of the class in force. Stands in namespace dft.
#define CLARIBOX_DFT_KERNELS(Table, name, Accessor)                                                                    \
    CLARIBOX_VECTOR_VARIANTS(Table<float>, name##Single, Accessor##Single)                                             \
    CLARIBOX_VECTOR_VARIANTS(Table<double>, name##Double, Accessor##Double)                                            \
    template <typename Real>                                                                                           \
    const Table<Real>& Accessor() {                                                                                    \
        if constexpr (kPrecision<Real> == 0) {                                                                         \
            return Accessor##Single();                                                                                 \
        } else {                                                                                                       \
            return Accessor##Double();                                                                                 \
        }                                                                                                              \
    }
