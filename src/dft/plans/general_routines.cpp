#include "dft/plans/general_routines.h"

#include "dft/base/record_fields.h"
#include "dft/plans/dft_plan.h"

namespace dft {

namespace {

template <typename Real, Direction direction>
std::int32_t Transform(void* input, void* output, DftDescriptor* record, void* work) {
    const auto run = direction == kForward ? dft_plan_forward<Real> : dft_plan_backward<Real>;
    auto* const result = static_cast<Complex<Real>*>(output);
    const std::int32_t status = run(static_cast<const Complex<Real>*>(input), result, GeneralPlan<Real>(*record), work);
    const Real scale = ScaleFactor<Real>(*record, direction);
    if (status == kPlanOk && scale != 1) {
        for (std::int32_t k = 0; k < record->length; ++k) {
            result[k] = {result[k].re * scale, result[k].im * scale};
        }
    }
    return StatusOfPlan(status);
}

} // namespace

std::int32_t general_forward_single(void* input, void* output, DftDescriptor* record, void* work) {
    return Transform<float, kForward>(input, output, record, work);
}

std::int32_t general_backward_single(void* input, void* output, DftDescriptor* record, void* work) {
    return Transform<float, kBackward>(input, output, record, work);
}

std::int32_t general_forward_double(void* input, void* output, DftDescriptor* record, void* work) {
    return Transform<double, kForward>(input, output, record, work);
}

std::int32_t general_backward_double(void* input, void* output, DftDescriptor* record, void* work) {
    return Transform<double, kBackward>(input, output, record, work);
}

} // namespace dft
