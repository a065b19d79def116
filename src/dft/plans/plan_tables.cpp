#include "dft/plans/plan_tables.h"

#include "dft/memory/engine_memory.h"
#include "dft/pow2/roots.h"

#include <algorithm>

namespace dft {

template <typename Real>
Complex<Real>* MakeDirectTable(int length, Roots<Real> roots) {
    Complex<Real>* const table = AllocateTable<Complex<Real>>(2 * static_cast<std::int64_t>(length));
    if (table != nullptr) {
        const int step = roots.count / length;
        for (int k = 0; k < length; ++k) {
            table[k] = table[length + k] = roots.circle[static_cast<std::ptrdiff_t>(k) * step];
        }
    }
    return table;
}

template <typename Real>
std::int32_t BuildDirect(BasicDftPlan<Real>& plan, int length, Roots<Real> roots) {
    plan.work_bytes = static_cast<std::int32_t>(sizeof(Complex<Real>)) * length + 16;
    plan.direct_matrix = MakeDirectTable(length, roots);
    return plan.direct_matrix == nullptr ? kPlanNoMemory : kPlanOk;
}

template <typename Real>
std::int32_t BuildBluestein(BasicDftPlan<Real>& plan, int length) {
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
    Complex<Real>* const circle = AllocateTable<Complex<Real>>(2 * static_cast<std::int64_t>(length));
    if (plan.chirp == nullptr || plan.chirp_spectrum == nullptr || circle == nullptr) {
        plan_free(circle);
        return kPlanNoMemory;
    }
    FillRoots(circle, 2 * length);
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
std::int32_t BuildGeneral(BasicDftPlan<Real>& plan, int length, Roots<Real> roots, int largestDirect) {
    FactorList factors;
    if (Factorise(length, factors)) {
        return BuildMixedRadix(plan, factors, roots);
    }
    return length <= largestDirect ? BuildDirect(plan, length, roots) : BuildBluestein(plan, length);
}

template <typename Real>
void ReleaseTables(BasicDftPlan<Real>& plan) {
    plan_free(plan.direct_matrix);
    plan_free(plan.chirp);
    plan_free(plan.chirp_spectrum);
    plan_free(plan.digit_reversal);
    fft_plan_free(plan.bluestein_fft_plan);
    for (int k = 0; k < kMaximumStages; ++k) {
        StageRecord<Real>& stage = plan.stages[k];
        plan_free(stage.twiddles);
        plan_free(stage.tail_matrix);
        if (k + 1 == kMaximumStages || stage.radix_matrix != plan.stages[k + 1].radix_matrix) {
            plan_free(stage.radix_matrix); // the last of the stages of one radix, which share it
        }
    }
    fft_plan_free(plan.fft_plan);
}

#define CLARIBOX_INSTANTIATE(Real)                                                                                     \
    template Complex<Real>* MakeDirectTable(int, Roots<Real>);                                                         \
    template std::int32_t BuildDirect(BasicDftPlan<Real>&, int, Roots<Real>);                                          \
    template std::int32_t BuildBluestein(BasicDftPlan<Real>&, int);                                                    \
    template std::int32_t BuildGeneral(BasicDftPlan<Real>&, int, Roots<Real>, int);                                    \
    template void ReleaseTables(BasicDftPlan<Real>&)
CLARIBOX_INSTANTIATE(float);
CLARIBOX_INSTANTIATE(double);
#undef CLARIBOX_INSTANTIATE

} // namespace dft
