#include "dft/plans/method_kernels.h"
#include "dft/pow2/depth_first.h"

namespace dft::CLARIBOX_VECTOR_CLASS {
namespace {

/// Convolves, circularly, one block of 2^stage elements whose frequencies begin at `reversed`, in bit-reversed order:
/// takes it apart, multiplies by the spectrum, and puts it together again. Depth first, so that most of that happens in
/// the first-level cache, and the spectrum in between never needs its natural order.
template <typename V>
void Convolve(const BasicDftPlan<Real<V>>& plan, LaneComplex<V>* data, int stage, int reversed) {
    using Vectors = AcrossLines<V>;
    const BasicFftPlan<Real<V>>& fft = *plan.bluestein_fft_plan;
    if (stage > kCachedLineBits<Vectors>) {
        const std::ptrdiff_t quarter = std::ptrdiff_t{1} << (stage - 2);
        const int step = plan.bluestein_length >> stage; // a bit of the frequency for each level above this one
        Radix4Pass<Vectors, kForward, kToBitReversed>(fft, data, data, stage, 0, 1);
        for (int k = 0; k < 4; ++k) {
            Convolve(plan, data + k * quarter, stage - 2, reversed + kReversed<4>.of[k] * step);
        }
        Radix4Pass<Vectors, kBackward, kToNatural>(fft, data, data, stage, 0, 1);
        return;
    }
    const int blockBits = FirstBlockBits(fft.order);
    Radix4Passes<Vectors, kForward, kToBitReversed>(fft, data, data, stage, blockBits, 0, [=](auto at, int bits, auto) {
        TransformSmallBlocks<kForward, kToBitReversed>(at, blockBits, bits);
    });
    for (int k = 0; k < 1 << stage; ++k, reversed = NextReversed(reversed, plan.bluestein_length / 2)) {
        data[k] = Rotate<kForward>(data[k], plan.chirp_spectrum[reversed]);
    }
    Radix4Passes<Vectors, kBackward, kToNatural>(fft, data, data, stage, blockBits, 0, [=](auto at, int bits, auto) {
        TransformSmallBlocks<kBackward, kToNatural>(at, blockBits, bits);
    });
}

struct RunBluestein {
    template <Direction direction, typename V>
    static void Run(const BasicDftPlan<Real<V>>& plan, const LaneComplex<V>* input, LaneComplex<V>* output,
                    LaneComplex<V>* buffer) {
        const int length = plan.length;
        for (int k = 0; k < length; ++k) {
            buffer[k] = Rotate<kForward>(input[k], plan.chirp[k]);
        }
        for (int k = length; k < plan.bluestein_length; ++k) {
            buffer[k] = LaneComplex<V>{};
        }
        Convolve(plan, buffer, plan.bluestein_fft_plan->order, 0);
        output[0] = Rotate<kForward>(buffer[0], plan.chirp[0]);
        for (int k = 1; k < length; ++k) {
            // The backward transform is the forward one with the index reversed.
            output[direction == kForward ? k : length - k] = Rotate<kForward>(buffer[k], plan.chirp[k]);
        }
    }
};

} // namespace

const PlanKernels<float> kBluesteinKernelsSingle = KernelsFor<RunBluestein, BatchSingle>::kKernels;
const PlanKernels<double> kBluesteinKernelsDouble = KernelsFor<RunBluestein, BatchDouble>::kKernels;

} // namespace dft::CLARIBOX_VECTOR_CLASS
