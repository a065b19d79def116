// Fields of a record chosen by precision, by direction and by the side of the job.
#pragma once

#include "dft/base/record.h"

#include <cstddef>
#include <type_traits>

namespace dft {

/// Which strides, offset and distance lay out an array: the input's, or out of place the output's.
enum class Side { kInput, kOutput };

inline std::ptrdiff_t Stride(const DftDescriptor& record, Side side) {
    return side == Side::kInput ? record.input_stride : record.output_stride;
}
inline std::ptrdiff_t Offset(const DftDescriptor& head, Side side) {
    return side == Side::kInput ? head.input_offset : head.output_offset;
}
inline std::ptrdiff_t Distance(const DftDescriptor& head, Side side) {
    return side == Side::kInput ? head.input_distance : head.output_distance;
}

/// Bytes of work memory for one run of any routine of the job.
inline std::size_t WorkBytes(const DftDescriptor& head) {
    return head.workspace_bytes > 0 ? static_cast<std::size_t>(head.workspace_bytes) : 0;
}

/// The one-dimensional routine of a record.
template <typename Real>
DftRoutine Slot(const DftDescriptor& record, Direction direction) {
    if constexpr (std::is_same_v<Real, float>) {
        return direction == kForward ? record.forward_single : record.backward_single;
    } else {
        return direction == kForward ? record.forward_double : record.backward_double;
    }
}

/// The threaded routine of a record for a power of two.
template <typename Real>
DftThreadedRoutine ThreadedSlot(const DftDescriptor& record, Direction direction) {
    if constexpr (std::is_same_v<Real, float>) {
        return direction == kForward ? record.c1d_forw_dft : record.c1d_back_dft;
    } else {
        return direction == kForward ? record.z1d_forw_dft : record.z1d_back_dft;
    }
}

/// The scale factor of a direction.
template <typename Real>
Real ScaleFactor(const DftDescriptor& record, Direction direction) {
    if constexpr (std::is_same_v<Real, float>) {
        return direction == kForward ? record.forward_scale_single : record.backward_scale_single;
    } else {
        return direction == kForward ? record.forward_scale_double : record.backward_scale_double;
    }
}

/// The plan of a dimension of general length.
template <typename Real>
BasicDftPlan<Real>* GeneralPlan(const DftDescriptor& record) {
    if constexpr (std::is_same_v<Real, float>) {
        return record.plan_complex_single;
    } else {
        return record.plan_complex_double;
    }
}

} // namespace dft
