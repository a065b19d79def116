#include "dft/plans/dft_plan.h"

#include "dft/base/record_fields.h"
#include "dft/memory/plan_life.h"
#include "dft/plans/methods.h"

namespace dft {
namespace {

template <typename Real>
std::int32_t Run(Direction direction, const Complex<Real>* input, Complex<Real>* output, const BasicDftPlan<Real>* plan,
                 void* work) {
    return RunPlan(plan, kDftPlanTag, input, output, work, [=](void* aligned) -> std::int32_t {
        KernelsOf(*plan).line[direction](*plan, input, output, aligned);
        ScaleResult(*plan, direction, output, plan->length);
        return kPlanOk;
    });
}

} // namespace

template <typename Real>
std::int32_t dft_plan_create(BasicDftPlan<Real>** plan, int length, int norm_flag, int hint) {
    const auto build = [=](BasicDftPlan<Real>& built) {
        built.tag = kDftPlanTag;
        built.length = length;
        built.norm_flag = norm_flag;
        return BuildMethod<Real>(built, {length, kLargestTiny, kLargestFactor}, {}, hint);
    };
    return CreatePlan(plan, length < 1 ? kPlanBadLength : kPlanOk, length, norm_flag, build, dft_plan_free<Real>);
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
        MethodAt<Real>(plan->method).release(*plan);
        plan->tag = 0;
        plan_free(plan);
    }
}

template <Direction direction, typename Real>
std::int32_t GeneralRoutine(void* input, void* output, DftDescriptor* record, void* work) {
    const auto run = direction == kForward ? dft_plan_forward<Real> : dft_plan_backward<Real>;
    auto* const result = static_cast<Complex<Real>*>(output);
    const BasicDftPlan<Real>* const plan = record->*RecordFields<Real>::kPlan;
    const std::int32_t status = run(static_cast<const Complex<Real>*>(input), result, plan, work);
    const Real scale = ScaleFactor<Real>(*record, direction);
    if (status == kPlanOk && scale != 1) {
        for (std::int32_t k = 0; k < record->length; ++k) {
            result[k] = {result[k].re * scale, result[k].im * scale};
        }
    }
    return StatusOfPlan(status);
}

#define CLARIBOX_INSTANTIATE(Real)                                                                                     \
    template std::int32_t dft_plan_create(BasicDftPlan<Real>**, int, int, int);                                        \
    template std::int32_t dft_plan_work_size(const BasicDftPlan<Real>*, int*);                                         \
    template std::int32_t dft_plan_forward(const Complex<Real>*, Complex<Real>*, const BasicDftPlan<Real>*, void*);    \
    template std::int32_t dft_plan_backward(const Complex<Real>*, Complex<Real>*, const BasicDftPlan<Real>*, void*);   \
    template void dft_plan_free(BasicDftPlan<Real>*);                                                                  \
    template std::int32_t GeneralRoutine<kForward, Real>(void*, void*, DftDescriptor*, void*);                         \
    template std::int32_t GeneralRoutine<kBackward, Real>(void*, void*, DftDescriptor*, void*)
CLARIBOX_INSTANTIATE(float);
CLARIBOX_INSTANTIATE(double);

} // namespace dft
