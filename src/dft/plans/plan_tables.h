// The tables of the three methods that serve other lengths than powers of two. Each builder takes a cleared plan and
// leaves what it allocated to `ReleaseTables`, also where it fails.
#pragma once

#include "dft/memory/plan_life.h"
#include "dft/plans/dft_plan.h"
#include "dft/plans/factors.h"

namespace dft {

/// All roots of unity of a circle of `count` points (plans/root_table.h).
template <typename Real>
struct Roots {
    const Complex<Real>* circle;
    int count;
};

/// Stage records, digit reversal and `work_bytes` of the mixed-radix method for the product of `factors`, which divides
/// the root count. kPlanNoMemory on failure.
template <typename Real>
std::int32_t BuildMixedRadix(BasicDftPlan<Real>& plan, const FactorList& factors, Roots<Real> roots);

/// 2 * length roots, twice around the circle, so that an index below 2 * length needs no reduction; null if there is no
/// memory. `length` divides the root count.
template <typename Real>
Complex<Real>* MakeDirectTable(int length, Roots<Real> roots);

/// Direct method for `length`, an odd number: its table and `work_bytes`.
template <typename Real>
std::int32_t BuildDirect(BasicDftPlan<Real>& plan, int length, Roots<Real> roots);

/// Bluestein method for `length` (Bluestein, "A linear filtering approach to the computation of the discrete Fourier
/// transform", 1970): chirp, its spectrum, the power-of-two plan and `work_bytes`.
template <typename Real>
std::int32_t BuildBluestein(BasicDftPlan<Real>& plan, int length);

/// Mixed-radix method where `length` factorises, else the direct one up to `largestDirect`, else Bluestein.
template <typename Real>
std::int32_t BuildGeneral(BasicDftPlan<Real>& plan, int length, Roots<Real> roots, int largestDirect);

/// Releases every table and inner plan.
template <typename Real>
void ReleaseTables(BasicDftPlan<Real>& plan);

} // namespace dft
