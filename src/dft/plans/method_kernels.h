// From a method's execution to its kernels. For vector sources only.
#pragma once

#include "dft/base/lane_complex.h"
#include "dft/plans/methods.h"

namespace dft::CLARIBOX_VECTOR_CLASS {

/// `Execution` has a static Run<direction, V>(plan, input, output, work) on arrays of LaneComplex<V>: V is a number for
/// a line, a vector for a batch.
template <typename Execution, typename V>
struct KernelsFor {
    using T = Real<V>;

    template <Direction direction>
    static void Line(const BasicDftPlan<T>& plan, const Complex<T>* input, Complex<T>* output, void* work) {
        Execution::template Run<direction, T>(plan, input, output, static_cast<Complex<T>*>(work));
    }
    template <Direction direction>
    static void Batch(const BasicDftPlan<T>& plan, const T* input, T* output, void* work) {
        // Vectors of g++ and clang may alias the elements that they are made of.
        Execution::template Run<direction, V>(plan, reinterpret_cast<const LaneComplex<V>*>(input),
                                              reinterpret_cast<LaneComplex<V>*>(output),
                                              static_cast<LaneComplex<V>*>(work));
    }
    static constexpr PlanKernels<T> kKernels = {{Line<kForward>, Line<kBackward>}, {Batch<kForward>, Batch<kBackward>}};
};

} // namespace dft::CLARIBOX_VECTOR_CLASS
