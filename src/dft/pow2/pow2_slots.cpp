#include "dft/pow2/pow2.h"

#include "dft/memory/engine_memory.h"
#include "dft/memory/work_memory.h"
#include "dft/pow2/pow2_runs.h"

namespace dft {
namespace {

template <typename Real>
std::int32_t Run(Direction direction, void* input, const DftDescriptor& record) {
    auto* const data = static_cast<Complex<Real>*>(input);
    const LineBuffer<Complex<Real>> scratch(static_cast<std::size_t>(record.length));
    if (scratch.data() == nullptr) {
        return DFT_NO_MEMORY;
    }
    ActivePow2Runs<Real>().line[direction](record, data, scratch.data());
    return DFT_OK;
}

} // namespace

std::int32_t c1d_forward_pow2(void* input, void*, DftDescriptor* record, void*) {
    return Run<float>(kForward, input, *record);
}
std::int32_t c1d_backward_pow2(void* input, void*, DftDescriptor* record, void*) {
    return Run<float>(kBackward, input, *record);
}
std::int32_t z1d_forward_pow2(void* input, void*, DftDescriptor* record, void*) {
    return Run<double>(kForward, input, *record);
}
std::int32_t z1d_backward_pow2(void* input, void*, DftDescriptor* record, void*) {
    return Run<double>(kBackward, input, *record);
}

} // namespace dft
