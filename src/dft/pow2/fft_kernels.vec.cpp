#include "dft/pow2/fft_kernels.h"

#include "dft/pow2/fft_run.h"

namespace dft::CLARIBOX_VECTOR_CLASS {
namespace {

template <Direction direction, typename V>
void Batch(const BasicFftPlan<Real<V>>& plan, const Real<V>* input, Real<V>* output, Real<V>* scratch) {
    FftRun<direction, V>(plan, reinterpret_cast<const LaneComplex<V>*>(input),
                         reinterpret_cast<LaneComplex<V>*>(output), reinterpret_cast<LaneComplex<V>*>(scratch));
}

template <typename V>
consteval FftKernels<Real<V>> Kernels() {
    return {{FftRun<kForward, Real<V>>, FftRun<kBackward, Real<V>>}, {Batch<kForward, V>, Batch<kBackward, V>}};
}

} // namespace

const FftKernels<float> kFftKernelsSingle = Kernels<BatchSingle>();
const FftKernels<double> kFftKernelsDouble = Kernels<BatchDouble>();

} // namespace dft::CLARIBOX_VECTOR_CLASS
