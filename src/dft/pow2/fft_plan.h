// Plans of one-dimensional complex transforms of 2^order elements. As all plans they are immutable after creation and
// may be shared by threads; each run has its own work memory.
#pragma once

#include "dft/base/complex.h"
#include "dft/base/plan_status.h"

#include <cstdint>

namespace dft {

inline constexpr int kFftPlanTag = 4; ///< given

inline constexpr int kBlockedOrder = 15;   ///< given: from it on the bit reversal works in place
inline constexpr int kLastSmallStage = 15; ///< given: log2 of the points of the last stage in `stage_tables`

/// Log2 of the elements of the blocks that the first pass makes. Always inlined: vector sources share no function.
[[gnu::always_inline]] constexpr int FirstBlockBits(int order) {
    return order % 2 == 0 ? 2 : 3;
}

/// Plan for 2^order elements.
template <typename Real>
struct BasicFftPlan {
    std::int32_t tag; ///< kFftPlanTag
    std::int32_t order;
    std::int32_t scale_forward;
    std::int32_t scale_backward;
    Real scale;
    std::int32_t hint;
    std::int32_t work_bytes;
    /// From order 4 on. Below kBlockedOrder: the number of pairs, then pairs (a, b), a <= b, of blocks of the first
    /// pass with bit-reversed indices. From it on, the second form: the bit reversals of the lower half of an index,
    /// rounded up.
    std::int32_t* bit_reversal;
    /// Radix-4 twiddles W^j, W^2j, W^3j of each stage of 2^k points, k from 4 (even order) or 5 (odd) by twos, j below
    /// 2^k / 4, in groups of four (stage_tables.h).
    Real* stage_tables;
    Real* large_tables; ///< the stages beyond 2^15, of the same layout; null below order 16
};

using FftPlan = BasicFftPlan<float>;
using FftPlanDouble = BasicFftPlan<double>;

/// As the functions of plans for any length (plans/dft_plan.h), with `order` 0 to 30 (kPlanBadOrder) for the length.
template <typename Real>
std::int32_t fft_plan_create(BasicFftPlan<Real>** plan, int order, int norm_flag, int hint);
template <typename Real>
std::int32_t fft_plan_forward(const Complex<Real>* input, Complex<Real>* output, const BasicFftPlan<Real>* plan,
                              void* work);
template <typename Real>
std::int32_t fft_plan_backward(const Complex<Real>* input, Complex<Real>* output, const BasicFftPlan<Real>* plan,
                               void* work);
template <typename Real>
void fft_plan_free(BasicFftPlan<Real>* plan);

} // namespace dft
