// Fields of a record chosen by precision, by direction and by the side of the job.
#pragma once

#include "dft/base/record.h"

#include <cstddef>

namespace dft {

/// Which strides, offset and distance lay out an array: the input's, or out of place the output's.
enum class Side { Input, Output };

inline std::ptrdiff_t Stride(const DftDescriptor& record, Side side) {
    return side == Side::Input ? record.input_stride : record.output_stride;
}
inline std::ptrdiff_t Offset(const DftDescriptor& head, Side side) {
    return side == Side::Input ? head.input_offset : head.output_offset;
}
inline std::ptrdiff_t Distance(const DftDescriptor& head, Side side) {
    return side == Side::Input ? head.input_distance : head.output_distance;
}

/// Bytes of work memory for one run of any routine of the job.
inline std::size_t WorkBytes(const DftDescriptor& head) {
    return head.workspace_bytes > 0 ? static_cast<std::size_t>(head.workspace_bytes) : 0;
}

/// The fields of one precision; arrays are indexed by direction.
template <typename Real>
struct RecordFields;
template <>
struct RecordFields<float> {
    using D = DftDescriptor;
    static constexpr auto kTable = &D::table_single;
    static constexpr auto kPlan = &D::plan_complex_single;
    static constexpr auto kRealPlan = &D::plan_real_single;
    static constexpr float D::*kScale[] = {&D::forward_scale_single, &D::backward_scale_single};
    static constexpr DftRoutine D::*kRoutine[] = {&D::forward_single, &D::backward_single};
    static constexpr DftThreadedRoutine D::*kThreaded[] = {&D::c1d_forw_dft, &D::c1d_back_dft};
    static constexpr DftPackRoutine D::*kPack[] = {&D::real_pack_forward_single, &D::real_pack_backward_single};
};
template <>
struct RecordFields<double> {
    using D = DftDescriptor;
    static constexpr auto kTable = &D::table_double;
    static constexpr auto kPlan = &D::plan_complex_double;
    static constexpr auto kRealPlan = &D::plan_real_double;
    static constexpr double D::*kScale[] = {&D::forward_scale_double, &D::backward_scale_double};
    static constexpr DftRoutine D::*kRoutine[] = {&D::forward_double, &D::backward_double};
    static constexpr DftThreadedRoutine D::*kThreaded[] = {&D::z1d_forw_dft, &D::z1d_back_dft};
    static constexpr DftPackRoutine D::*kPack[] = {&D::real_pack_forward_double, &D::real_pack_backward_double};
};

/// The one-dimensional routine of a record, and its scale factor.
template <typename Real>
DftRoutine RoutineOf(const DftDescriptor& record, Direction direction) {
    return record.*RecordFields<Real>::kRoutine[direction];
}
template <typename Real>
Real ScaleFactor(const DftDescriptor& record, Direction direction) {
    return record.*RecordFields<Real>::kScale[direction];
}

} // namespace dft
