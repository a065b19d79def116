// Lengths 1 to 4, which have no tables and no work memory. Their kernels stand with those of the direct method.
#include "dft/plans/methods.h"

namespace dft {

template <typename Real>
Method<Real> Tiny() {
    return {[](const MethodQuery& query) { return query.length <= query.tinyUpTo; }, false,
            [](BasicDftPlan<Real>&, int, Roots<Real>, int) -> std::int32_t { return kPlanOk; },
            [](BasicDftPlan<Real>&) {}, ActiveTinyKernels<Real>};
}

template Method<float> Tiny();
template Method<double> Tiny();

} // namespace dft
