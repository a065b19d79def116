#include "dft/pow2/fft_runs.h"

#include "dft/pow2/fft_passes.h"

namespace dft::CLARIBOX_VECTOR_CLASS {

const FftRuns<float> kFftRunsSingle = {{FftRun<kForward, float>, FftRun<kBackward, float>}};
const FftRuns<double> kFftRunsDouble = {{FftRun<kForward, double>, FftRun<kBackward, double>}};

} // namespace dft::CLARIBOX_VECTOR_CLASS
