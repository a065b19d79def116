// The methods by which a plan transforms lines. One table lists them (methods.cpp); each has its builder and its
// vector source in files of its name.
#pragma once

#include "dft/base/kernels.h"
#include "dft/plans/dft_plan.h"
#include "dft/pow2/roots.h"

#include <cstdint>

namespace dft {

/// The kernels of a method: unscaled runs of a valid plan, in place or disjoint. `work` is aligned to 16 bytes and has
/// `work_bytes` less the alignment. A batch gives each of its lines the bytes of `line`.
template <typename Real>
struct PlanKernels {
    void (*line[2])(const BasicDftPlan<Real>& plan, const Complex<Real>* input, Complex<Real>* output, void* work);
    /// Element k of all lines stands together, BatchLanes<Real>() real parts, then as many imaginary ones. Arrays of so
    /// many times the size, on a multiple of 64 bytes.
    void (*batch[2])(const BasicDftPlan<Real>& plan, const Real* input, Real* output, void* work);
};

/// What a plan asks the table for.
struct MethodQuery {
    int length;
    int tinyUpTo;   ///< the longest line to run without tables
    int directUpTo; ///< the longest odd line without a factorisation to run by the definition
};

template <typename Real>
struct Method {
    bool (*serves)(const MethodQuery& query);
    bool needsRoots; ///< of build
    /// Builds the tables for `length`, which divides `roots.count`, and sets `work_bytes`. A plan status; on failure
    /// `release` frees what was built.
    std::int32_t (*build)(BasicDftPlan<Real>& plan, int length, Roots<Real> roots, int hint);
    void (*release)(BasicDftPlan<Real>& plan);
    const PlanKernels<Real>& (*kernels)();
};

/// The entries of the table, and the kernels of those that have vector sources of their own.
template <typename Real>
Method<Real> Tiny();
template <typename Real>
Method<Real> PowerOfTwo();
template <typename Real>
Method<Real> MixedRadix();
template <typename Real>
Method<Real> Direct();
template <typename Real>
Method<Real> Bluestein();
CLARIBOX_DFT_KERNELS(PlanKernels, kTinyKernels, ActiveTinyKernels)
CLARIBOX_DFT_KERNELS(PlanKernels, kMixedRadixKernels, ActiveMixedRadixKernels)
CLARIBOX_DFT_KERNELS(PlanKernels, kDirectKernels, ActiveDirectKernels)
CLARIBOX_DFT_KERNELS(PlanKernels, kBluesteinKernels, ActiveBluesteinKernels)

/// The method at an index in the table, as a plan holds it.
template <typename Real>
const Method<Real>& MethodAt(int index);

/// The kernels in force for a plan.
template <typename Real>
const PlanKernels<Real>& KernelsOf(const BasicDftPlan<Real>& plan) {
    return MethodAt<Real>(plan.method).kernels();
}

/// Chooses a plan's method and builds it, with `roots` or, where they are none, with a circle of its own.
template <typename Real>
std::int32_t BuildMethod(BasicDftPlan<Real>& plan, const MethodQuery& query, Roots<Real> roots, int hint);

} // namespace dft
