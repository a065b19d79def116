#include "dft/plans/dft_plan.h"

#include "dft/memory/engine_memory.h"
#include "dft/memory/work_memory.h"
#include "dft/plans/plan_runs.h"
#include "dft/plans/plan_tables.h"
#include "dft/pow2/roots.h"

namespace dft {
namespace {

constexpr int kLargestTiny = 4;

/// Chooses the method by the length and builds its tables.
template <typename Real>
std::int32_t BuildMethod(BasicDftPlan<Real>& plan, int length, int hint) {
    if (length <= kLargestTiny) {
        return kPlanOk;
    }
    if ((length & (length - 1)) == 0) {
        int order = 0;
        while (1 << order < length) {
            ++order;
        }
        plan.power_of_two = 1;
        const std::int32_t status = fft_plan_create(&plan.fft_plan, order, kUnscaled, hint);
        if (status == kPlanOk) {
            plan.work_bytes = plan.fft_plan->work_bytes;
        }
        return status;
    }
    Complex<Real>* const circle = FitsWorkMemory<Real>(length) ? AllocateTable<Complex<Real>>(length) : nullptr;
    if (circle == nullptr) {
        return kPlanNoMemory;
    }
    FillRoots(circle, length);
    const std::int32_t status = BuildGeneral(plan, length, Roots<Real>{circle, length}, kLargestFactor);
    plan_free(circle);
    return status;
}

template <typename Real>
std::int32_t Run(Direction direction, const Complex<Real>* input, Complex<Real>* output, const BasicDftPlan<Real>* plan,
                 void* work) {
    return RunPlan(plan, kDftPlanTag, input, output, work, [=](void* aligned) -> std::int32_t {
        ActivePlanRuns<Real>().line[direction](*plan, input, output, aligned);
        ScaleResult(*plan, direction, output, plan->length);
        return kPlanOk;
    });
}

} // namespace

template <typename Real>
std::int32_t dft_plan_create(BasicDftPlan<Real>** plan, int length, int norm_flag, int hint) {
    if (plan == nullptr) {
        return kPlanNullPointer;
    }
    *plan = nullptr;
    if (length < 1) {
        return kPlanBadLength;
    }
    const auto build = [=](BasicDftPlan<Real>& built) {
        built.tag = kDftPlanTag;
        built.length = length;
        built.norm_flag = norm_flag;
        return BuildMethod(built, length, hint);
    };
    return CreatePlan(plan, length, norm_flag, build, dft_plan_free<Real>);
}

template <typename Real>
std::int32_t dft_plan_work_size(const BasicDftPlan<Real>* plan, int* bytes) {
    return WorkSize(plan, kDftPlanTag, bytes);
}

template <typename Real>
std::int32_t dft_plan_forward(const Complex<Real>* input, Complex<Real>* output, const BasicDftPlan<Real>* plan,
                              void* work) {
    return Run(kForward, input, output, plan, work);
}

template <typename Real>
std::int32_t dft_plan_backward(const Complex<Real>* input, Complex<Real>* output, const BasicDftPlan<Real>* plan,
                               void* work) {
    return Run(kBackward, input, output, plan, work);
}

template <typename Real>
void dft_plan_free(BasicDftPlan<Real>* plan) {
    if (plan != nullptr) {
        ReleaseTables(*plan);
        plan->tag = 0;
        plan_free(plan);
    }
}

#define CLARIBOX_INSTANTIATE(Real)                                                                                     \
    template std::int32_t dft_plan_create(BasicDftPlan<Real>**, int, int, int);                                        \
    template std::int32_t dft_plan_work_size(const BasicDftPlan<Real>*, int*);                                         \
    template std::int32_t dft_plan_forward(const Complex<Real>*, Complex<Real>*, const BasicDftPlan<Real>*, void*);    \
    template std::int32_t dft_plan_backward(const Complex<Real>*, Complex<Real>*, const BasicDftPlan<Real>*, void*);   \
    template void dft_plan_free(BasicDftPlan<Real>*)
CLARIBOX_INSTANTIATE(float);
CLARIBOX_INSTANTIATE(double);
#undef CLARIBOX_INSTANTIATE

} // namespace dft
