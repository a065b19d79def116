#include "dft/descriptor/descriptor_routines.h"

#include "dft/base/record_fields.h"
#include "dft/driver/jobs.h"
#include "dft/memory/work_memory.h"

namespace dft {
namespace {

/// `Element` is Complex<Real> for the complex domain, Real for the real one.
template <typename Real, typename Element>
std::int32_t ComputeJob(DftDescriptor* head, Direction direction, void* data, void* output) {
    auto* const from = static_cast<Element*>(data);
    auto* const to = static_cast<Element*>(output);
    // A real job stores its number of transforms here: only a single one is done by a single call.
    if (head->one_shot != 1) {
        return RunJob(head, direction, from, to, engine_maximum_threads());
    }
    // One call of the head's routine is the whole job: neither threads nor the environment are asked for.
    const WorkMemory work(WorkBytes(*head));
    if (work.data() == nullptr) {
        return DFT_NO_MEMORY;
    }
    Element* const result = head->placement == DFT_INPLACE ? from + head->input_offset : to + head->output_offset;
    return RoutineOf<Real>(*head, direction)(from + head->input_offset, result, head, work.data());
}

} // namespace

std::int32_t Compute(DftDescriptor* head, Direction direction, void* data, void* output) {
    if (head == nullptr || data == nullptr || (head->placement != DFT_INPLACE && output == nullptr)) {
        return DFT_BAD_ARGUMENT;
    }
    if (!HasTag(*head)) {
        return DFT_BAD_DESCRIPTOR;
    }
    if (head->commit_state == DFT_UNCOMMITTED) {
        return DFT_NOT_COMMITTED;
    }
    const bool isComplex = head->forward_domain == DFT_COMPLEX;
    const auto job = head->precision == DFT_SINGLE
                         ? (isComplex ? ComputeJob<float, Complex<float>> : ComputeJob<float, float>)
                         : (isComplex ? ComputeJob<double, Complex<double>> : ComputeJob<double, double>);
    return job(head, direction, data, output);
}

} // namespace dft
