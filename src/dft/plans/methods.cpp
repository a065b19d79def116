#include "dft/plans/methods.h"

#include "dft/memory/plan_life.h"

namespace dft {
/// All methods. The first that serves a length is taken.
template <typename Real>
const Method<Real>& MethodAt(int index) {
    static const Method<Real> methods[] = {
        Tiny<Real>(),       // 1 to 4
        PowerOfTwo<Real>(), // 8, 16, 32, ..
        MixedRadix<Real>(), // products of two and more primes, none above 150, that are no power of two
        Direct<Real>(),     // primes up to 150; odd lengths of real lines up to 180
        Bluestein<Real>(),  // all others
    };
    return methods[index];
}

template <typename Real>
std::int32_t BuildMethod(BasicDftPlan<Real>& plan, const MethodQuery& query, Roots<Real> roots, int hint) {
    while (!MethodAt<Real>(plan.method).serves(query)) {
        ++plan.method;
    }
    const Method<Real>& method = MethodAt<Real>(plan.method);
    if (roots.circle != nullptr || !method.needsRoots) {
        return method.build(plan, query.length, roots, hint);
    }
    Complex<Real>* const circle = FitsWorkMemory<Real>(query.length) ? AllocateCircle<Real>(query.length) : nullptr;
    if (circle == nullptr) {
        return kPlanNoMemory;
    }
    const std::int32_t status = method.build(plan, query.length, {circle, query.length}, hint);
    plan_free(circle);
    return status;
}

template const Method<float>& MethodAt(int);
template const Method<double>& MethodAt(int);
template std::int32_t BuildMethod(DftPlan&, const MethodQuery&, Roots<float>, int);
template std::int32_t BuildMethod(DftPlanDouble&, const MethodQuery&, Roots<double>, int);

} // namespace dft
