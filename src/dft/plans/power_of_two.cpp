#include "dft/plans/methods.h"

#include "dft/pow2/fft_kernels.h"

#include <bit>

namespace dft {
namespace {

template <Direction direction, typename Real>
void Line(const BasicDftPlan<Real>& plan, const Complex<Real>* input, Complex<Real>* output, void* work) {
    ActiveFftKernels<Real>().line[direction](*plan.fft_plan, input, output, static_cast<Complex<Real>*>(work));
}
template <Direction direction, typename Real>
void Batch(const BasicDftPlan<Real>& plan, const Real* input, Real* output, void* work) {
    ActiveFftKernels<Real>().batch[direction](*plan.fft_plan, input, output, static_cast<Real*>(work));
}

bool Serves(const MethodQuery& query) {
    return std::has_single_bit(static_cast<unsigned int>(query.length));
}

template <typename Real>
std::int32_t Build(BasicDftPlan<Real>& plan, int length, Roots<Real> /*roots*/, int hint) {
    plan.power_of_two = 1;
    const int order = std::countr_zero(static_cast<unsigned int>(length));
    const std::int32_t status = fft_plan_create(&plan.fft_plan, order, kUnscaled, hint);
    if (status == kPlanOk) {
        plan.work_bytes = plan.fft_plan->work_bytes;
    }
    return status;
}

template <typename Real>
void Release(BasicDftPlan<Real>& plan) {
    fft_plan_free(plan.fft_plan);
}

template <typename Real>
const PlanKernels<Real>& Kernels() {
    static constexpr PlanKernels<Real> kernels = {{Line<kForward, Real>, Line<kBackward, Real>},
                                                  {Batch<kForward, Real>, Batch<kBackward, Real>}};
    return kernels;
}

} // namespace

template <typename Real>
Method<Real> PowerOfTwo() {
    return {Serves, false, Build<Real>, Release<Real>, Kernels<Real>};
}

template Method<float> PowerOfTwo();
template Method<double> PowerOfTwo();

} // namespace dft
