// Plans of one-dimensional complex transforms: of any length (`BasicDftPlan`) and of powers of two (`BasicFftPlan`).
//
// The forward transform is X[j] = sum over k of x[k] * exp(-2 pi i j k / n), the backward one has the opposite sign.
// Plans are immutable after creation and may be shared by threads; each run has its own work memory.
#pragma once

#include "dft/base/plan_status.h"
#include "dft/pow2/fft_plan.h"

#include <cstdint>

namespace dft {

inline constexpr int kDftPlanTag = 13; ///< given, as the next: hosts may look at a plan's tag
inline constexpr int kRealPlanTag = 15;
inline constexpr int kLargestTiny = 4; ///< given: up to it a plan needs no table

/// Given, and enough: a length below 2^31 has at most 19 odd factors (3^20 > 2^31), or a 2 and fifteen fours.
inline constexpr int kMaximumStages = 20;

/// Given: no prime above it enters the mixed-radix method, since the direct sum over it would cost more than
/// Bluestein's convolution. Pinned by DftPlan.LengthChoosesTheMethod.
inline constexpr int kLargestFactor = 150;

/// Given: a group of blocks has at most this many points, 16,000 bytes in single precision, half of a first-level cache
/// of 32 KiB. Pinned by DftPlan.StagesAndDigitReversal.
inline constexpr int kGroupPoints = 2000;

/// One radix of the mixed-radix method, in the order of the factor list.
template <typename Real>
struct StageRecord {
    std::int32_t radix;
    std::int32_t span;   ///< the length left after this stage
    std::int32_t stride; ///< product of the radices before it
    std::int32_t count;  ///< blocks of this stage in a row inside its group
    /// 2 * radix roots of unity, twice the circle; null up to radix 5. May be that of the stage before.
    Complex<Real>* radix_matrix;
    /// For each j below span: root^(i * j * stride) for i from 0 (radix above 5) or from 1 (others) to radix - 1.
    Complex<Real>* twiddles;
    Complex<Real>* tail_matrix; ///< last stage only: the like of radix_matrix for a tail span above 5
};

/// Plan for `length` elements.
template <typename Real>
struct BasicDftPlan {
    std::int32_t tag; ///< kDftPlanTag, or kRealPlanTag inside a BasicRealDftPlan
    std::int32_t length;
    std::int32_t scale_forward; ///< nonzero if the forward run multiplies by `scale`
    std::int32_t scale_backward;
    Real scale;
    std::int32_t norm_flag;
    std::int32_t work_bytes; ///< of one run
    std::int32_t power_of_two;
    std::int32_t compact_tables; ///< always 0
    std::int32_t bluestein_length;
    Complex<Real>*direct_matrix, *chirp, *chirp_spectrum;
    BasicFftPlan<Real>* fft_plan;
    BasicFftPlan<Real>* bluestein_fft_plan;
    std::int32_t mixed_radix;
    std::int32_t last_stage; ///< index of the last record in `stages`
    std::int32_t* digit_reversal;
    StageRecord<Real> stages[kMaximumStages];
    std::int32_t method; ///< index in the table of methods (methods.h)
};

using DftPlan = BasicDftPlan<float>;
using DftPlanDouble = BasicDftPlan<double>;

/// Builds a plan for `length` elements; `*plan` is null unless kPlanOk is returned. `hint` is carried only.
/// kPlanNullPointer, kPlanBadLength, kPlanBadNormalisation, kPlanNoMemory.
template <typename Real>
std::int32_t dft_plan_create(BasicDftPlan<Real>** plan, int length, int norm_flag, int hint);

/// Stores the bytes of work memory of one run. kPlanNullPointer, kPlanBadTag.
template <typename Real>
std::int32_t dft_plan_work_size(const BasicDftPlan<Real>* plan, int* bytes);

/// Transforms `length` elements from `input` to `output`, in place or disjoint. `work` has `work_bytes` bytes at any
/// alignment; if null, the run allocates them. kPlanNullPointer, kPlanBadTag, kPlanNoMemory.
template <typename Real>
std::int32_t dft_plan_forward(const Complex<Real>* input, Complex<Real>* output, const BasicDftPlan<Real>* plan,
                              void* work);
template <typename Real>
std::int32_t dft_plan_backward(const Complex<Real>* input, Complex<Real>* output, const BasicDftPlan<Real>* plan,
                               void* work);

/// The descriptor routine of a complex dimension with a general plan: a run of it, then the scale factor unless that
/// is 1.
template <Direction direction, typename Real>
std::int32_t GeneralRoutine(void* input, void* output, DftDescriptor* record, void* work);

/// Releases a plan and all it owns; null is ignored.
template <typename Real>
void dft_plan_free(BasicDftPlan<Real>* plan);

} // namespace dft
