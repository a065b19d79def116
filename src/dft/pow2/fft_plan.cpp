#include "dft/pow2/fft_plan.h"

#include "dft/memory/plan_life.h"
#include "dft/pow2/bit_reversal.h"
#include "dft/pow2/fft_kernels.h"
#include "dft/pow2/roots.h"
#include "dft/pow2/stage_tables.h"

#include <cmath>

namespace dft {
namespace {

constexpr int kLargestOrder = 30;    // the largest power of two among 32-bit lengths; pinned by DftPlan.Refusals
constexpr int kLargestTinyOrder = 3; // given: plans up to 8 points have no tables

std::int32_t* MakeBitReversal(int order) {
    if (order >= kBlockedOrder) {
        const int half = (order + 1) / 2;
        std::int32_t* const halves = AllocateTable<std::int32_t>(1 << half);
        for (std::int32_t k = 0; halves != nullptr && k < 1 << half; ++k) {
            halves[k] = ReverseBits(k, half);
        }
        return halves;
    }
    const int bits = order - FirstBlockBits(order);
    // There are 2^ceil(bits / 2) palindromes, each a pair of its own.
    const std::int32_t pairs = ((1 << bits) + (1 << (bits + 1) / 2)) / 2;
    std::int32_t* const table = AllocateTable<std::int32_t>(1 + 2 * pairs);
    if (table == nullptr) {
        return nullptr;
    }
    std::int32_t* end = table;
    *end++ = pairs;
    for (std::int32_t a = 0; a < 1 << bits; ++a) {
        const std::int32_t b = ReverseBits(a, bits);
        if (a <= b) {
            *end++ = a;
            *end++ = b;
        }
    }
    return table;
}

/// The stages of 2^first, 2^(first + 2), .. 2^last points, one after the other, cut from the circle of 2^order roots.
template <typename Real>
Real* MakeStages(int first, int last, const Complex<Real>* circle, int order) {
    Real* const table = AllocateTable<Real>(((std::int64_t{4} << last) - (std::int64_t{1} << first)) / 2);
    Real* end = table;
    for (int stage = first; table != nullptr && stage <= last; stage += 2) {
        end = WriteStage(end, std::int64_t{1} << (stage - 2), 3,
                         [=](std::int64_t k) { return circle[k << (order - stage)]; });
    }
    return table;
}

template <typename Real>
std::int32_t BuildTables(BasicFftPlan<Real>& plan) {
    const int order = plan.order;
    if (order <= kLargestTinyOrder) {
        return kPlanOk;
    }
    // The passes of the higher orders run in place: their need is that of the largest order that does not.
    constexpr auto kElementBytes = static_cast<std::int32_t>(sizeof(Complex<Real>));
    plan.work_bytes = (kElementBytes << (order < kLastSmallStage ? order : kLastSmallStage)) + 16;

    Complex<Real>* const circle = AllocateCircle<Real>(1 << order);
    plan.bit_reversal = MakeBitReversal(order);
    if (circle == nullptr || plan.bit_reversal == nullptr) {
        plan_free(circle);
        return kPlanNoMemory;
    }
    const int first = FirstBlockBits(order) + 2;
    const int lastSmall = order <= kLastSmallStage ? order : first + 10;
    plan.stage_tables = MakeStages(first, lastSmall, circle, order);
    if (order > kLastSmallStage) {
        plan.large_tables = MakeStages(lastSmall + 2, order, circle, order);
    }
    plan_free(circle);
    const bool complete = plan.stage_tables != nullptr && (order <= kLastSmallStage || plan.large_tables != nullptr);
    return complete ? kPlanOk : kPlanNoMemory;
}

template <typename Real>
std::int32_t Run(Direction direction, const Complex<Real>* input, Complex<Real>* output, const BasicFftPlan<Real>* plan,
                 void* work) {
    return RunPlan(plan, kFftPlanTag, input, output, work, [=](void* scratch) -> std::int32_t {
        ActiveFftKernels<Real>().line[direction](*plan, input, output, static_cast<Complex<Real>*>(scratch));
        ScaleResult(*plan, direction, output, std::int64_t{1} << plan->order);
        return kPlanOk;
    });
}

} // namespace

template <typename Real>
std::int32_t fft_plan_create(BasicFftPlan<Real>** plan, int order, int norm_flag, int hint) {
    const auto build = [=](BasicFftPlan<Real>& built) {
        built.tag = kFftPlanTag;
        built.order = order;
        built.hint = hint;
        return BuildTables(built);
    };
    return CreatePlan(plan, order < 0 || order > kLargestOrder ? kPlanBadOrder : kPlanOk, std::ldexp(1.0, order),
                      norm_flag, build, fft_plan_free<Real>);
}

template <typename Real>
std::int32_t fft_plan_forward(const Complex<Real>* input, Complex<Real>* output, const BasicFftPlan<Real>* plan,
                              void* work) {
    return Run(kForward, input, output, plan, work);
}

template <typename Real>
std::int32_t fft_plan_backward(const Complex<Real>* input, Complex<Real>* output, const BasicFftPlan<Real>* plan,
                               void* work) {
    return Run(kBackward, input, output, plan, work);
}

template <typename Real>
void fft_plan_free(BasicFftPlan<Real>* plan) {
    if (plan != nullptr) {
        plan_free(plan->bit_reversal);
        plan_free(plan->stage_tables);
        plan_free(plan->large_tables);
        plan->tag = 0;
        plan_free(plan);
    }
}

#define CLARIBOX_INSTANTIATE(Real)                                                                                     \
    template std::int32_t fft_plan_create(BasicFftPlan<Real>**, int, int, int);                                        \
    template std::int32_t fft_plan_forward(const Complex<Real>*, Complex<Real>*, const BasicFftPlan<Real>*, void*);    \
    template std::int32_t fft_plan_backward(const Complex<Real>*, Complex<Real>*, const BasicFftPlan<Real>*, void*);   \
    template void fft_plan_free(BasicFftPlan<Real>*)
CLARIBOX_INSTANTIATE(float);
CLARIBOX_INSTANTIATE(double);

} // namespace dft
