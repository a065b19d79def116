#include "dft/plans/methods.h"

#include "dft/memory/plan_life.h"

#include <algorithm>

namespace dft {
namespace {

bool Serves(const MethodQuery& /*query*/) {
    return true;
}

template <typename Real>
std::int32_t Build(BasicDftPlan<Real>& plan, int length, Roots<Real> /*roots*/, int /*hint*/) {
    int order = 0;
    while (1LL << order < 2LL * length - 1) {
        ++order;
    }
    if (order > 28) {
        return kPlanNoMemory; // twice the length would not be an int
    }
    const int points = 1 << order;
    plan.bluestein_length = points;
    plan.chirp = AllocateTable<Complex<Real>>(length);
    plan.chirp_spectrum = AllocateTable<Complex<Real>>(points);
    Complex<Real>* const circle = AllocateCircle<Real>(2 * length);
    if (plan.chirp == nullptr || plan.chirp_spectrum == nullptr || circle == nullptr) {
        plan_free(circle);
        return kPlanNoMemory;
    }
    int square = 0; // k * k modulo 2 * length
    for (int k = 0; k < length; ++k) {
        plan.chirp[k] = circle[square];
        const Complex<Real> conjugate{circle[square].re, -circle[square].im};
        plan.chirp_spectrum[k] = conjugate;
        if (k > 0) {
            plan.chirp_spectrum[points - k] = conjugate;
        }
        square = (square + 2 * k + 1) % (2 * length);
    }
    plan_free(circle);

    std::int32_t status = fft_plan_create(&plan.bluestein_fft_plan, order, kUnscaled, 0);
    if (status == kPlanOk) {
        status = fft_plan_forward(plan.chirp_spectrum, plan.chirp_spectrum, plan.bluestein_fft_plan, nullptr);
    }
    if (status != kPlanOk) {
        return status;
    }
    const Real inverse = Real{1} / static_cast<Real>(points);
    std::for_each(plan.chirp_spectrum, plan.chirp_spectrum + points, [=](Complex<Real>& value) {
        value = {value.re * inverse, value.im * inverse};
    });
    return StoreWorkBytes(plan, static_cast<std::int64_t>(sizeof(Complex<Real>)) * points + 16 +
                                    plan.bluestein_fft_plan->work_bytes);
}

template <typename Real>
void Release(BasicDftPlan<Real>& plan) {
    plan_free(plan.chirp);
    plan_free(plan.chirp_spectrum);
    fft_plan_free(plan.bluestein_fft_plan);
}

} // namespace

template <typename Real>
Method<Real> Bluestein() {
    return {Serves, false, Build<Real>, Release<Real>, ActiveBluesteinKernels<Real>};
}

template Method<float> Bluestein();
template Method<double> Bluestein();

} // namespace dft
