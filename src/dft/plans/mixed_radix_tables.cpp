// Stage records of the mixed-radix method.
#include "dft/plans/plan_tables.h"

#include <algorithm>

namespace dft {
namespace {

constexpr int kLargestDedicatedRadix = 5;

/// The twiddles of a stage in the order in which its pass reads them.
template <typename Real>
Complex<Real>* MakeTwiddles(const StageRecord<Real>& stage, Roots<Real> roots, int step) {
    Complex<Real>* const twiddles = AllocateTable<Complex<Real>>(static_cast<std::int64_t>(stage.radix) * stage.span);
    if (twiddles == nullptr) {
        return nullptr;
    }
    const int first = stage.radix > kLargestDedicatedRadix ? 0 : 1;
    Complex<Real>* next = twiddles;
    for (int j = 0; j < stage.span; ++j) {
        const std::ptrdiff_t angle = static_cast<std::ptrdiff_t>(j) * stage.stride * step;
        for (int i = first; i < stage.radix; ++i) {
            *next++ = roots.circle[i * angle]; // (radix - 1) * (span - 1) * stride is less than the length
        }
    }
    return twiddles;
}

/// Element offsets of the tail blocks of one group, in the order in which the passes want their results.
template <typename Real>
std::int32_t* MakeDigitReversal(const BasicDftPlan<Real>& plan) {
    const int entries = plan.stages[plan.last_stage].count;
    std::int32_t* const entry = AllocateTable<std::int32_t>(entries);
    if (entry == nullptr) {
        return nullptr;
    }
    int done = 1;
    for (int stage = plan.last_stage - 1; stage >= 0; --stage) {
        const int radix = plan.stages[stage].radix;
        if (done < entries) {
            for (int digit = radix - 1; digit >= 0; --digit) {
                std::transform(entry, entry + done, entry + static_cast<std::ptrdiff_t>(digit) * done,
                               [=](int inner) { return inner * radix + digit; });
            }
            done *= radix;
        } else {
            std::transform(entry, entry + entries, entry, [=](int inner) { return inner * radix; });
        }
    }
    return entry;
}

template <typename Real>
void StoreStructure(BasicDftPlan<Real>& plan, const FactorList& factors) {
    int rest = factors.last;
    for (int k = 0; k < factors.count; ++k) {
        rest *= factors.radix[k];
    }
    int stride = 1;
    int count = 1;
    for (int k = 0; k < factors.count; ++k) {
        StageRecord<Real>& stage = plan.stages[k];
        stage.radix = factors.radix[k];
        stage.span = rest / stage.radix;
        stage.stride = stride;
        stage.count = count;
        count = rest > kGroupPoints ? 1 : count * stage.radix; // a new group begins behind a block too large for it
        stride *= stage.radix;
        rest = stage.span;
    }
    plan.mixed_radix = 1;
    plan.last_stage = factors.count - 1;
}

template <typename Real>
bool MakeMatrices(BasicDftPlan<Real>& plan, Roots<Real> roots) {
    for (int k = 0; k <= plan.last_stage; ++k) {
        StageRecord<Real>& stage = plan.stages[k];
        if (k > 0 && stage.radix == plan.stages[k - 1].radix) {
            stage.radix_matrix = plan.stages[k - 1].radix_matrix;
        } else if (stage.radix > kLargestDedicatedRadix) {
            stage.radix_matrix = MakeDirectTable(stage.radix, roots);
            if (stage.radix_matrix == nullptr) {
                return false;
            }
        }
    }
    StageRecord<Real>& last = plan.stages[plan.last_stage];
    if (last.span > kLargestDedicatedRadix) {
        last.tail_matrix = MakeDirectTable(last.span, roots);
        return last.tail_matrix != nullptr;
    }
    return true;
}

} // namespace

template <typename Real>
std::int32_t BuildMixedRadix(BasicDftPlan<Real>& plan, const FactorList& factors, Roots<Real> roots) {
    StoreStructure(plan, factors);
    const int length = plan.stages[0].radix * plan.stages[0].span;
    const int largest = std::max(factors.last, *std::max_element(factors.radix, factors.radix + factors.count));
    const std::int64_t scratch = largest > kLargestDedicatedRadix ? largest : 0;
    const auto element = static_cast<std::int64_t>(sizeof(Complex<Real>));
    if (StoreWorkBytes(plan, element * (length + scratch) + 16) != kPlanOk || !MakeMatrices(plan, roots)) {
        return kPlanNoMemory;
    }
    for (int k = 0; k <= plan.last_stage; ++k) {
        plan.stages[k].twiddles = MakeTwiddles(plan.stages[k], roots, roots.count / length);
        if (plan.stages[k].twiddles == nullptr) {
            return kPlanNoMemory;
        }
    }
    plan.digit_reversal = MakeDigitReversal(plan);
    return plan.digit_reversal == nullptr ? kPlanNoMemory : kPlanOk;
}

template std::int32_t BuildMixedRadix(DftPlan&, const FactorList&, Roots<float>);
template std::int32_t BuildMixedRadix(DftPlanDouble&, const FactorList&, Roots<double>);

} // namespace dft
