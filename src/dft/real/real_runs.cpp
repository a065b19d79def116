// The runs of a real plan.
#include "dft/memory/plan_life.h"
#include "dft/plans/methods.h"
#include "dft/real/packed_formats.h"
#include "dft/real/real_plan.h"

namespace dft {
namespace {

/// From the forward transform a[] of `half` complex elements, which a real line of twice as many makes up, to that
/// line's native layout, with the table `unpack_forward`; backward, with `unpack_backward`, from the native layout to
/// the input of the complex backward transform. In place or not. Lengths up to 4 need no table.
///
/// With E and O the spectra of the even and odd elements, a = E + i O, conj E[half - k] = E[k] and the same for O:
/// E[k] = (a[k] + conj a[half - k]) / 2, O[k] = (a[k] - conj a[half - k]) / 2i, and the line's spectrum is E[k] + w[k]
/// O[k].
template <Direction direction, typename Real>
void StepBetweenHalves(int half, const Complex<Real>* table, const Complex<Real>* a, Complex<Real>* result) {
    // The inverse has a factor 1/2 in front of sums; an unscaled backward transform leaves it out.
    constexpr Real kWeight = direction == kForward ? 1 : 2;
    result[0] = {a[0].re + a[0].im, a[0].re - a[0].im};
    for (int k = 1, mirrored = half - 1; k < mirrored; ++k, --mirrored) {
        const Complex<Real> x = a[k];
        const Complex<Real> y = a[mirrored];
        const Real u = x.re - y.re;
        const Real v = x.im + y.im;
        const Real p = table[k].im * u + table[k].re * v;
        const Real q = table[k].im * v - table[k].re * u;
        result[k] = {kWeight * y.re + p, q - kWeight * y.im};
        result[mirrored] = {kWeight * x.re - p, q - kWeight * x.im};
    }
    if (half % 2 == 0) {
        result[half / 2] = {kWeight * a[half / 2].re, -kWeight * a[half / 2].im};
    }
}

/// The definition for an odd `length` between real elements and the native layout, in place or not, on sums and
/// differences of mirrored elements, which halves the products. `roots` is the circle; `pairs` has room for length - 1
/// elements.
template <Direction direction, typename Real>
void TransformOddDirectly(int length, const Complex<Real>* roots, const Real* input, Real* output, Real* pairs) {
    const int half = length / 2;
    const Real first = input[0];
    Real total = first;
    for (int k = 1; k <= half; ++k) {
        Real* const pair = pairs + 2 * (k - 1);
        if (direction == kForward) {
            pair[0] = input[k] + input[length - k];
            pair[1] = input[k] - input[length - k];
        } else { // of the two conjugate elements k and length - k
            pair[0] = 2 * input[2 * k - 1];
            pair[1] = 2 * input[2 * k];
        }
        total += pair[0];
    }
    output[0] = total;
    for (int j = 1; j <= half; ++j) {
        Real cosines = first;
        Real sines = 0;
        int angle = 0;
        for (int k = 0; k < half; ++k) {
            angle += j;
            angle -= angle >= length ? length : 0;
            cosines += pairs[2 * k] * roots[angle].re;
            sines += pairs[2 * k + 1] * roots[angle].im;
        }
        output[direction == kForward ? 2 * j - 1 : j] = direction == kForward ? cosines : cosines + sines;
        output[direction == kForward ? 2 * j : length - j] = direction == kForward ? sines : cosines - sines;
    }
}

template <Direction direction, typename Real>
void RunEven(const BasicRealDftPlan<Real>& plan, const Real* input, Real* output, void* work) {
    // Pairs of elements as complex ones: the same numbers at the same places.
    const auto* const from = reinterpret_cast<const Complex<Real>*>(input);
    auto* const to = reinterpret_cast<Complex<Real>*>(output);
    const int half = plan.length / 2;
    if constexpr (direction == kForward) {
        KernelsOf(plan.complex_run).line[kForward](plan.complex_run, from, to, work);
        StepBetweenHalves<kForward>(half, plan.unpack_forward, to, to);
    } else {
        StepBetweenHalves<kBackward>(half, plan.unpack_backward, from, to);
        KernelsOf(plan.complex_run).line[kBackward](plan.complex_run, to, to, work);
    }
}

/// Lengths 1 and 3, which have no tables and no work memory.
template <Direction direction, typename Real>
void RunTinyOdd(int length, const Real* input, Real* output) {
    constexpr Real kSine = Real(0.866025403784438646763723170752936183L);
    constexpr Complex<Real> kThirds[3] = {{1, 0}, {Real(-0.5), -kSine}, {Real(-0.5), kSine}};
    Real pairs[2];
    TransformOddDirectly<direction>(length, kThirds, input, output, pairs);
}

/// Odd lengths by the mixed-radix and Bluestein methods, in place on a complex line of their own: forward with zero
/// imaginary parts, of whose spectrum the first half is all there is to know; backward from a conjugate-even spectrum,
/// which leaves nothing in the imaginary parts but rounding.
template <Direction direction, typename Real>
std::int32_t RunOddAsComplex(const BasicRealDftPlan<Real>& plan, const Real* input, Real* output, void* work) {
    const int length = plan.length;
    const LineBuffer<Complex<Real>> buffer(static_cast<std::size_t>(length));
    Complex<Real>* const line = buffer.data();
    if (line == nullptr) {
        return kPlanNoMemory;
    }
    line[0] = {input[0], 0};
    for (int k = 1; k <= length / 2; ++k) {
        const int mirrored = length - k;
        if constexpr (direction == kForward) {
            line[k] = {input[k], 0};
            line[mirrored] = {input[mirrored], 0};
        } else {
            line[k] = {input[2 * k - 1], input[2 * k]};
            line[mirrored] = {input[2 * k - 1], -input[2 * k]};
        }
    }
    KernelsOf(plan.complex_run).line[direction](plan.complex_run, line, line, work);
    output[0] = line[0].re;
    for (int k = 1; k <= length / 2; ++k) {
        const int mirrored = length - k;
        if constexpr (direction == kForward) {
            output[2 * k - 1] = line[k].re;
            output[2 * k] = line[k].im;
        } else {
            output[k] = line[k].re;
            output[mirrored] = line[mirrored].re;
        }
    }
    return kPlanOk;
}

template <Direction direction, typename Real>
std::int32_t RunMethod(const BasicRealDftPlan<Real>& plan, const Real* input, Real* output, void* work) {
    if (plan.length % 2 == 0) {
        RunEven<direction>(plan, input, output, work);
    } else if (plan.length <= kLargestTiny) {
        RunTinyOdd<direction>(plan.length, input, output);
    } else if (plan.direct_matrix != nullptr) {
        TransformOddDirectly<direction>(plan.length, plan.direct_matrix, input, output, static_cast<Real*>(work));
    } else {
        return RunOddAsComplex<direction>(plan, input, output, work);
    }
    return kPlanOk;
}

/// Between real elements and the native layout, scaled where the plan's flag asks for it.
template <Direction direction, typename Real>
std::int32_t RunNative(const BasicRealDftPlan<Real>& plan, const Real* input, Real* output, void* work) {
    const std::int32_t status = RunMethod<direction>(plan, input, output, work);
    if (status == kPlanOk && (direction == kForward ? plan.scale_forward : plan.scale_backward) != 0) {
        for (int k = 0; k < plan.length; ++k) {
            output[k] *= plan.scale;
        }
    }
    return status;
}

} // namespace

template <DftCode format, typename Real>
std::int32_t real_pack_forward(const Real* input, Real* output, const BasicRealDftPlan<Real>* plan, void* work) {
    return RunPlan(plan, kRealPlanTag, input, output, work, [=](void* aligned) {
        const std::int32_t status = RunNative<kForward>(*plan, input, output, aligned);
        if (status == kPlanOk) {
            ShuffleFromNative<format>(output, plan->length);
        }
        return status;
    });
}

template <DftCode format, typename Real>
std::int32_t real_pack_backward(const Real* input, Real* output, const BasicRealDftPlan<Real>* plan, void* work) {
    return RunPlan(plan, kRealPlanTag, input, output, work, [=](void* aligned) -> std::int32_t {
        if (!NeedsShuffle(format, plan->length)) {
            return RunNative<kBackward>(*plan, input, output, aligned);
        }
        const LineBuffer<Real> native(static_cast<std::size_t>(plan->length));
        if (native.data() == nullptr) {
            return kPlanNoMemory;
        }
        CopyToNative<format>(input, native.data(), plan->length);
        return RunNative<kBackward, Real>(*plan, native.data(), output, aligned);
    });
}

#define CLARIBOX_INSTANTIATE(format, Real)                                                                             \
    template std::int32_t real_pack_forward<format>(const Real*, Real*, const BasicRealDftPlan<Real>*, void*);         \
    template std::int32_t real_pack_backward<format>(const Real*, Real*, const BasicRealDftPlan<Real>*, void*)
CLARIBOX_INSTANTIATE(DFT_PACK_FULL, float);
CLARIBOX_INSTANTIATE(DFT_PACK_TIGHT, float);
CLARIBOX_INSTANTIATE(DFT_PACK_NATIVE, float);
CLARIBOX_INSTANTIATE(DFT_PACK_FULL, double);
CLARIBOX_INSTANTIATE(DFT_PACK_TIGHT, double);
CLARIBOX_INSTANTIATE(DFT_PACK_NATIVE, double);

} // namespace dft
