#include "dft/plans/butterflies.h"
#include "dft/plans/method_kernels.h"
#include "dft/pow2/fft_run.h"

namespace dft::CLARIBOX_VECTOR_CLASS {
namespace {

struct RunTiny {
    template <Direction direction, typename V>
    static void Run(const BasicDftPlan<Real<V>>& plan, const LaneComplex<V>* input, LaneComplex<V>* output,
                    LaneComplex<V>* /*work*/) {
        if (plan.length == 3) {
            Dft3<direction, V>([=](int k) { return input[k]; },
                               [=](int j, LaneComplex<V> value) { output[j] = value; });
        } else {
            FftRunTiny<direction, V>(plan.length / 2, input, output); // 1, 2 and 4 are 2^0, 2^1 and 2^2
        }
    }
};

struct RunDirect {
    template <Direction direction, typename V>
    static void Run(const BasicDftPlan<Real<V>>& plan, const LaneComplex<V>* input, LaneComplex<V>* output,
                    LaneComplex<V>* work) {
        if (plan.length == 3) { // half a real line
            return RunTiny::Run<direction, V>(plan, input, output, work);
        }
        DftOdd<direction, V>(
            plan.length, plan.direct_matrix, work, [=](int k) { return input[k]; },
            [=](int j, LaneComplex<V> value) { output[j] = value; });
    }
};

} // namespace

const PlanKernels<float> kDirectKernelsSingle = KernelsFor<RunDirect, BatchSingle>::kKernels;
const PlanKernels<double> kDirectKernelsDouble = KernelsFor<RunDirect, BatchDouble>::kKernels;
const PlanKernels<float> kTinyKernelsSingle = KernelsFor<RunTiny, BatchSingle>::kKernels;
const PlanKernels<double> kTinyKernelsDouble = KernelsFor<RunTiny, BatchDouble>::kKernels;

} // namespace dft::CLARIBOX_VECTOR_CLASS
