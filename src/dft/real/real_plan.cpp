#include "dft/real/real_plan.h"

#include "dft/memory/plan_life.h"
#include "dft/plans/methods.h"

namespace dft {
namespace {

/// The tables of the step between a complex line of half the length and the native layout.
template <typename Real>
bool MakeUnpackTables(BasicRealDftPlan<Real>& plan, Roots<Real> roots) {
    const int entries = (roots.count + 3) / 4;
    plan.unpack_forward = AllocateTable<Complex<Real>>(entries);
    plan.unpack_backward = AllocateTable<Complex<Real>>(entries);
    if (plan.unpack_forward == nullptr || plan.unpack_backward == nullptr) {
        return false;
    }
    constexpr Real kHalf = Real(0.5);
    for (int j = 0; j < entries; ++j) {
        const Complex<Real> root = roots.circle[j];
        plan.unpack_forward[j] = {kHalf * root.re, kHalf * root.im + kHalf};
        plan.unpack_backward[j] = {-root.re, 1 + root.im};
    }
    return true;
}

/// Chooses the method by the length and builds its tables.
template <typename Real>
std::int32_t BuildTables(BasicRealDftPlan<Real>& plan, int hint) {
    const bool isEven = plan.length % 2 == 0;
    const bool isTiny = plan.length <= kLargestTiny;
    const int points = isEven ? plan.length / 2 : plan.length;
    Complex<Real>* const circle = !isTiny && FitsWorkMemory<Real>(points) ? AllocateCircle<Real>(plan.length) : nullptr;
    if (circle == nullptr && !isTiny) {
        return kPlanNoMemory;
    }
    const Roots<Real> roots = {circle, plan.length};
    const MethodQuery query = {points, isTiny ? kLargestTiny : 0, isEven ? kLargestFactor : kLargestRealDirect};
    std::int32_t status = BuildMethod<Real>(plan, query, roots, hint);
    if (status == kPlanOk && isEven && !isTiny && !MakeUnpackTables(plan, roots)) {
        status = kPlanNoMemory;
    }
    plan_free(circle);
    if (!isEven && plan.direct_matrix != nullptr) {
        // Sums and differences of real elements take half the room of complex ones.
        plan.work_bytes = static_cast<std::int32_t>(sizeof(Real)) * points + 16;
    }
    plan.complex_run = static_cast<const BasicDftPlan<Real>&>(plan);
    plan.complex_run.length = points;
    return status;
}

} // namespace

template <typename Real>
std::int32_t real_plan_create(BasicRealDftPlan<Real>** plan, int length, int norm_flag, int hint) {
    const auto build = [=](BasicRealDftPlan<Real>& built) {
        built.tag = kRealPlanTag;
        built.length = length;
        built.norm_flag = norm_flag;
        return BuildTables(built, hint);
    };
    return CreatePlan(plan, length < 1 ? kPlanBadLength : kPlanOk, length, norm_flag, build, real_plan_free<Real>);
}

template <typename Real>
std::int32_t real_plan_work_size(const BasicRealDftPlan<Real>* plan, int* bytes) {
    return WorkSize(plan, kRealPlanTag, bytes);
}

template <typename Real>
void real_plan_free(BasicRealDftPlan<Real>* plan) {
    if (plan != nullptr) {
        MethodAt<Real>(plan->method).release(*plan);
        plan_free(plan->unpack_forward);
        plan_free(plan->unpack_backward);
        plan->tag = 0;
        plan_free(plan);
    }
}

#define CLARIBOX_INSTANTIATE(Real)                                                                                     \
    template std::int32_t real_plan_create(BasicRealDftPlan<Real>**, int, int, int);                                   \
    template std::int32_t real_plan_work_size(const BasicRealDftPlan<Real>*, int*);                                    \
    template void real_plan_free(BasicRealDftPlan<Real>*)
CLARIBOX_INSTANTIATE(float);
CLARIBOX_INSTANTIATE(double);

} // namespace dft
