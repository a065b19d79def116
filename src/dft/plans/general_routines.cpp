#include "dft/plans/general_routines.h"

#include "dft/base/record_fields.h"
#include "dft/plans/dft_plan.h"

namespace dft {

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

template std::int32_t GeneralRoutine<kForward, float>(void*, void*, DftDescriptor*, void*);
template std::int32_t GeneralRoutine<kBackward, float>(void*, void*, DftDescriptor*, void*);
template std::int32_t GeneralRoutine<kForward, double>(void*, void*, DftDescriptor*, void*);
template std::int32_t GeneralRoutine<kBackward, double>(void*, void*, DftDescriptor*, void*);

} // namespace dft
