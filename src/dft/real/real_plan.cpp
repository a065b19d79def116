#include "dft/real/real_plan.h"

#include "dft/memory/engine_memory.h"
#include "dft/plans/plan_tables.h"
#include "dft/pow2/roots.h"

#include <bit>

namespace dft {
namespace {

constexpr int kLargestTiny = 4; // up to it no run needs a table

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

template <typename Real>
std::int32_t BuildPowerOfTwo(BasicRealDftPlan<Real>& plan, int points, int hint) {
    plan.power_of_two = 1;
    const int order = std::countr_zero(static_cast<unsigned int>(points));
    const std::int32_t status = fft_plan_create(&plan.fft_plan, order, kUnscaled, hint);
    if (status == kPlanOk) {
        plan.work_bytes = plan.fft_plan->work_bytes;
    }
    return status;
}

template <typename Real>
std::int32_t BuildEven(BasicRealDftPlan<Real>& plan, int hint, Roots<Real> roots) {
    const int half = roots.count / 2;
    const bool isPowerOfTwo = std::has_single_bit(static_cast<unsigned int>(half));
    const std::int32_t status =
        isPowerOfTwo ? BuildPowerOfTwo(plan, half, hint) : BuildGeneral<Real>(plan, half, roots, kLargestFactor);
    if (status != kPlanOk) {
        return status;
    }
    return MakeUnpackTables(plan, roots) ? kPlanOk : kPlanNoMemory;
}

template <typename Real>
std::int32_t BuildOdd(BasicRealDftPlan<Real>& plan, Roots<Real> roots) {
    const std::int32_t status = BuildGeneral<Real>(plan, roots.count, roots, kLargestRealDirect);
    if (plan.direct_matrix != nullptr) {
        // Sums and differences of real elements take half the room of complex ones.
        plan.work_bytes = static_cast<std::int32_t>(sizeof(Real)) * roots.count + 16;
    }
    return status;
}

/// Chooses the method by the length and builds its tables.
template <typename Real>
std::int32_t BuildMethod(BasicRealDftPlan<Real>& plan, int hint) {
    const int length = plan.length;
    const bool isEven = length % 2 == 0;
    const int points = isEven ? length / 2 : length;
    std::int32_t status = kPlanOk;
    if (length > kLargestTiny) {
        Complex<Real>* const circle = FitsWorkMemory<Real>(points) ? AllocateTable<Complex<Real>>(length) : nullptr;
        if (circle == nullptr) {
            return kPlanNoMemory;
        }
        FillRoots(circle, length);
        const Roots<Real> roots{circle, length};
        status = isEven ? BuildEven(plan, hint, roots) : BuildOdd(plan, roots);
        plan_free(circle);
    }
    plan.complex_run = static_cast<const BasicDftPlan<Real>&>(plan);
    plan.complex_run.length = points;
    return status;
}

} // namespace

template <typename Real>
std::int32_t real_plan_create(BasicRealDftPlan<Real>** plan, int length, int norm_flag, int hint) {
    if (plan == nullptr) {
        return kPlanNullPointer;
    }
    *plan = nullptr;
    if (length < 1) {
        return kPlanBadLength;
    }
    const auto build = [=](BasicRealDftPlan<Real>& built) {
        built.tag = kRealPlanTag;
        built.length = length;
        built.norm_flag = norm_flag;
        return BuildMethod(built, hint);
    };
    return CreatePlan(plan, length, norm_flag, build, real_plan_free<Real>);
}

template <typename Real>
std::int32_t real_plan_work_size(const BasicRealDftPlan<Real>* plan, int* bytes) {
    return WorkSize(plan, kRealPlanTag, bytes);
}

template <typename Real>
void real_plan_free(BasicRealDftPlan<Real>* plan) {
    if (plan != nullptr) {
        ReleaseTables<Real>(*plan);
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
#undef CLARIBOX_INSTANTIATE

} // namespace dft
