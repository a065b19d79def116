// Plans of one-dimensional complex transforms of 2^order elements. As all plans they are immutable after creation and
// may be shared by threads; each run has its own work memory.
#pragma once

#include "dft/base/complex.h"
#include "dft/base/plan_status.h"

#include <cstdint>

namespace dft {

inline constexpr int kFftPlanTag = 4;

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
    std::int32_t* bit_reversal; ///< order 4 and above: see pow2/fft_plan_layout.h
    /// Radix-4 twiddles W^j, W^2j, W^3j of each stage of 2^k points, k from 4 (even order) or 5 (odd) by twos, j below
    /// 2^k / 4, in groups of four j: four re W^j, four im W^j, then the same of W^2j and of W^3j.
    Real* stage_tables;
    Real* large_tables; ///< the stages beyond 2^15, of the same layout; null below order 16
};

using FftPlan = BasicFftPlan<float>;
using FftPlanDouble = BasicFftPlan<double>;

/// The same five for 2^order elements, `order` 0 to 30 (kPlanBadOrder).
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
