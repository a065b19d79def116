// Plans of one-dimensional transforms of real elements.
//
// An even length n runs as n/2 complex elements, even-indexed elements as real parts, odd-indexed as imaginary parts,
// and one step separates the two spectra (Brigham, "The Fast Fourier Transform", chapter 10). An odd length runs by
// the direct method on real elements, or by the others on a complex line with zero imaginary parts.
#pragma once

#include "dft/base/record.h"
#include "dft/plans/dft_plan.h"

namespace dft {

/// Given: up to it an odd length without a factorisation takes the direct method, beyond it Bluestein's. Above the 150
/// of complex lines, as the direct sum over real elements is half the work. Pinned by DftPlan.LengthChoosesTheMethod.
inline constexpr int kLargestRealDirect = 180;

/// Plan for `length` real elements. Its BasicDftPlan has the tag kRealPlanTag and the method, tables and `work_bytes`
/// of the complex transform inside, of n/2 elements for an even length n, else of n; the direct method of an odd
/// length needs only n real elements and 16 bytes. For powers of two `fft_plan` has the order log2(n) - 1.
template <typename Real>
struct BasicRealDftPlan : BasicDftPlan<Real> {
    /// Even lengths from 6 on, (n + 3) / 4 entries each, for the roots w[j] = exp(-2 pi i j / n): half of w[j] + i.
    Complex<Real>* unpack_forward;
    Complex<Real>* unpack_backward; ///< -re w[j] + i (1 + im w[j]): the inverse of that, doubled
    /// The same method and tables as those above, under the length that they transform. It owns nothing.
    BasicDftPlan<Real> complex_run;
};

using RealDftPlan = BasicRealDftPlan<float>;
using RealDftPlanDouble = BasicRealDftPlan<double>;

/// Builds a plan for `length` elements; `*plan` is null unless kPlanOk is returned. `norm_flag` is a
/// PlanNormalisation, `hint` is carried only. kPlanNullPointer, kPlanBadLength, kPlanBadNormalisation, kPlanNoMemory.
template <typename Real>
std::int32_t real_plan_create(BasicRealDftPlan<Real>** plan, int length, int norm_flag, int hint);

/// Stores the bytes of work memory of one run. kPlanNullPointer, kPlanBadTag.
template <typename Real>
std::int32_t real_plan_work_size(const BasicRealDftPlan<Real>* plan, int* bytes);

/// Transforms `length` real elements to their spectrum in the layout `format`, a DFT_PACK_* (packed_formats.h), in
/// place or disjoint. `work` has `work_bytes` bytes at any alignment; if null, the run allocates them.
/// kPlanNullPointer, kPlanBadTag, kPlanNoMemory.
template <DftCode format, typename Real>
std::int32_t real_pack_forward(const Real* input, Real* output, const BasicRealDftPlan<Real>* plan, void* work);

/// The inverse, `length` times as large: a spectrum in the layout `format` to `length` real elements.
template <DftCode format, typename Real>
std::int32_t real_pack_backward(const Real* input, Real* output, const BasicRealDftPlan<Real>* plan, void* work);

/// Releases a plan and all it owns; null is ignored.
template <typename Real>
void real_plan_free(BasicRealDftPlan<Real>* plan);

} // namespace dft
