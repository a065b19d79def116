#include "dft/plans/methods.h"

#include "dft/memory/plan_life.h"

namespace dft {
namespace {

bool Serves(const MethodQuery& query) {
    return query.length % 2 != 0 && query.length <= query.directUpTo;
}

template <typename Real>
std::int32_t Build(BasicDftPlan<Real>& plan, int length, Roots<Real> roots, int /*hint*/) {
    plan.work_bytes = static_cast<std::int32_t>(sizeof(Complex<Real>)) * length + 16;
    plan.direct_matrix = AllocateTwoCircles(length, roots);
    return plan.direct_matrix == nullptr ? kPlanNoMemory : kPlanOk;
}

template <typename Real>
void Release(BasicDftPlan<Real>& plan) {
    plan_free(plan.direct_matrix);
}

} // namespace

template <typename Real>
Method<Real> Direct() {
    return {Serves, true, Build<Real>, Release<Real>, ActiveDirectKernels<Real>};
}

/// Lengths 1 to 4, which have no tables and no work memory. Their kernels stand with those of the direct method.
template <typename Real>
Method<Real> Tiny() {
    return {[](const MethodQuery& query) { return query.length <= query.tinyUpTo; }, false,
            [](BasicDftPlan<Real>&, int, Roots<Real>, int) -> std::int32_t { return kPlanOk; },
            [](BasicDftPlan<Real>&) {}, ActiveTinyKernels<Real>};
}

template Method<float> Tiny();
template Method<double> Tiny();
template Method<float> Direct();
template Method<double> Direct();

} // namespace dft
