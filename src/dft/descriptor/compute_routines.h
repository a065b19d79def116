// The sixteen routines that compute: single and double precision, complex and real, in place and out of place, forward
// and backward.
#pragma once

#include "dft/base/record_fields.h"
#include "dft/descriptor/descriptor_routines.h"
#include "dft/driver/drivers.h"
#include "dft/memory/work_memory.h"

#include <algorithm>
#include <type_traits>

namespace dft {

/// In place, `output` is not looked at.
using DftComputeRoutine = std::int32_t (*)(DftDescriptor* handle, void* input, void* output);

/// One call of the head's routine is the whole job: neither threads nor the environment are asked for.
template <typename Real, Direction direction>
std::int32_t ComputeOneShot(DftDescriptor* head, void* input, void* output) {
    const WorkMemory work(static_cast<std::size_t>(std::max(head->workspace_bytes, 0)));
    if (work.data() == nullptr) {
        return DFT_NO_MEMORY;
    }
    return Slot<Real>(*head, direction)(input, output, head, work.data());
}

/// `Element` is Complex<Real> for the complex domain, Real for the real one. One pointer in place, two out of place.
template <typename Element, typename... Pointers>
std::int32_t ComputeByDriver(DftDescriptor* head, Direction direction, Pointers... data) {
    const int threads = engine_maximum_threads();
    if constexpr (std::is_floating_point_v<Element>) {
        return threads < 2 ? RunRealSerial(head, direction, data...)
                           : RunRealThreaded(head, direction, data..., threads);
    } else {
        return threads < 2 ? RunSerial(head, direction, data...) : RunThreaded(head, direction, data..., threads);
    }
}

template <typename Real, typename Element, bool kInPlace, Direction direction>
std::int32_t ComputeJob(DftDescriptor* head, void* input, void* output) {
    if (head == nullptr || input == nullptr || (!kInPlace && output == nullptr)) {
        return DFT_BAD_ARGUMENT;
    }
    if (!HasTag(*head)) {
        return DFT_BAD_DESCRIPTOR;
    }
    if (head->commit_state == DFT_UNCOMMITTED) {
        return DFT_NOT_COMMITTED;
    }
    auto* const from = static_cast<Element*>(input);
    auto* const to = kInPlace ? from : static_cast<Element*>(output);
    // A real job stores its number of transforms here: only a single one is done by a single call.
    if (head->one_shot == 1) {
        const std::int32_t outputOffset = kInPlace ? head->input_offset : head->output_offset;
        return ComputeOneShot<Real, direction>(head, from + head->input_offset, to + outputOffset);
    }
    if constexpr (kInPlace) {
        return ComputeByDriver<Element>(head, direction, from);
    } else {
        return ComputeByDriver<Element>(head, direction, from, to);
    }
}

// Suffixes: c and z are complex in single and double precision, s and d real ones.
inline constexpr DftComputeRoutine dfti_compute_forward_c = ComputeJob<float, Complex<float>, true, kForward>;
inline constexpr DftComputeRoutine dfti_compute_forward_z = ComputeJob<double, Complex<double>, true, kForward>;
inline constexpr DftComputeRoutine dfti_compute_forward_s = ComputeJob<float, float, true, kForward>;
inline constexpr DftComputeRoutine dfti_compute_forward_d = ComputeJob<double, double, true, kForward>;
inline constexpr DftComputeRoutine dfti_compute_backward_c = ComputeJob<float, Complex<float>, true, kBackward>;
inline constexpr DftComputeRoutine dfti_compute_backward_z = ComputeJob<double, Complex<double>, true, kBackward>;
inline constexpr DftComputeRoutine dfti_compute_backward_s = ComputeJob<float, float, true, kBackward>;
inline constexpr DftComputeRoutine dfti_compute_backward_d = ComputeJob<double, double, true, kBackward>;
inline constexpr DftComputeRoutine dfti_compute_forward_c_out = ComputeJob<float, Complex<float>, false, kForward>;
inline constexpr DftComputeRoutine dfti_compute_forward_z_out = ComputeJob<double, Complex<double>, false, kForward>;
inline constexpr DftComputeRoutine dfti_compute_forward_s_out = ComputeJob<float, float, false, kForward>;
inline constexpr DftComputeRoutine dfti_compute_forward_d_out = ComputeJob<double, double, false, kForward>;
inline constexpr DftComputeRoutine dfti_compute_backward_c_out = ComputeJob<float, Complex<float>, false, kBackward>;
inline constexpr DftComputeRoutine dfti_compute_backward_z_out = ComputeJob<double, Complex<double>, false, kBackward>;
inline constexpr DftComputeRoutine dfti_compute_backward_s_out = ComputeJob<float, float, false, kBackward>;
inline constexpr DftComputeRoutine dfti_compute_backward_d_out = ComputeJob<double, double, false, kBackward>;

} // namespace dft
