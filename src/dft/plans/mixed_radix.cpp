// The tables of the mixed-radix method.
#include "dft/plans/methods.h"

#include "dft/memory/plan_life.h"

#include <algorithm>

namespace dft {
namespace {

constexpr int kLargestDedicatedRadix = 5;

/// The radices of a length: 2 if any, fours, odd primes ascending; the largest prime is apart.
struct FactorList {
    int radix[kMaximumStages];
    int count; ///< of recorded radices
    int last;  ///< the last factor
};

/// Divides the odd primes but the last out of `rest`. False if one would be above the limit.
bool RecordOddPrimes(int& rest, FactorList& factors) {
    int prime = 3;
    while (static_cast<long long>(prime) * prime <= rest) {
        if (rest % prime == 0) {
            factors.radix[factors.count++] = prime;
            rest /= prime;
        } else if ((prime += 2) > kLargestFactor) {
            return false;
        }
    }
    return true;
}

/// Factorises `length`, at least 1. False if it is prime or a power of two, or if a prime factor is above 150.
bool Factorise(int length, FactorList& factors) {
    int rest = length;
    factors.count = 0;
    for (; rest % 4 == 0; rest /= 4) {
        factors.radix[factors.count++] = 4;
    }
    if (rest % 2 == 0) {
        rest /= 2;
        factors.radix[factors.count++] = 4; // the two goes in front of the fours
        factors.radix[0] = 2;
    }
    if (!RecordOddPrimes(rest, factors)) {
        return false;
    }
    factors.last = rest;
    return factors.count > 0 && rest > 1 && rest <= kLargestFactor;
}

/// The twiddles of a stage in the order in which its pass reads them.
template <typename Real>
Complex<Real>* MakeTwiddles(const StageRecord<Real>& stage, Roots<Real> roots, int length) {
    Complex<Real>* const twiddles = AllocateTable<Complex<Real>>(static_cast<std::int64_t>(stage.radix) * stage.span);
    if (twiddles == nullptr) {
        return nullptr;
    }
    const int first = stage.radix > kLargestDedicatedRadix ? 0 : 1;
    Complex<Real>* next = twiddles;
    for (int j = 0; j < stage.span; ++j) {
        for (int i = first; i < stage.radix; ++i) {
            *next++ = roots.Of(length, i * j * stage.stride); // (radix - 1) * (span - 1) * stride is below the length
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
void StoreStructure(BasicDftPlan<Real>& plan, int length, const FactorList& factors) {
    int rest = length;
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
            stage.radix_matrix = AllocateTwoCircles(stage.radix, roots);
            if (stage.radix_matrix == nullptr) {
                return false;
            }
        }
    }
    StageRecord<Real>& last = plan.stages[plan.last_stage];
    if (last.span > kLargestDedicatedRadix) {
        last.tail_matrix = AllocateTwoCircles(last.span, roots);
        return last.tail_matrix != nullptr;
    }
    return true;
}

bool Serves(const MethodQuery& query) {
    FactorList factors;
    return Factorise(query.length, factors);
}

template <typename Real>
std::int32_t Build(BasicDftPlan<Real>& plan, int length, Roots<Real> roots, int /*hint*/) {
    FactorList factors;
    Factorise(length, factors);
    StoreStructure(plan, length, factors);
    const int largest = std::max(factors.last, *std::max_element(factors.radix, factors.radix + factors.count));
    const std::int64_t scratch = largest > kLargestDedicatedRadix ? largest : 0;
    const auto element = static_cast<std::int64_t>(sizeof(Complex<Real>));
    if (StoreWorkBytes(plan, element * (length + scratch) + 16) != kPlanOk || !MakeMatrices(plan, roots)) {
        return kPlanNoMemory;
    }
    for (int k = 0; k <= plan.last_stage; ++k) {
        plan.stages[k].twiddles = MakeTwiddles(plan.stages[k], roots, length);
        if (plan.stages[k].twiddles == nullptr) {
            return kPlanNoMemory;
        }
    }
    plan.digit_reversal = MakeDigitReversal(plan);
    return plan.digit_reversal == nullptr ? kPlanNoMemory : kPlanOk;
}

template <typename Real>
void Release(BasicDftPlan<Real>& plan) {
    plan_free(plan.digit_reversal);
    for (int k = 0; k <= plan.last_stage; ++k) {
        const StageRecord<Real>& stage = plan.stages[k];
        plan_free(stage.twiddles);
        plan_free(stage.tail_matrix);
        if (k == plan.last_stage || stage.radix_matrix != plan.stages[k + 1].radix_matrix) {
            plan_free(stage.radix_matrix); // the last of the stages of one radix, which share it
        }
    }
}

} // namespace

template <typename Real>
Method<Real> MixedRadix() {
    return {Serves, true, Build<Real>, Release<Real>, ActiveMixedRadixKernels<Real>};
}

template Method<float> MixedRadix();
template Method<double> MixedRadix();

} // namespace dft
