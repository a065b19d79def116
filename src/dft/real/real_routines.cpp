#include "dft/real/real_routines.h"

#include "dft/base/plan_status.h"
#include "dft/base/record_fields.h"
#include "dft/base/scale_vector.h"

namespace dft {
namespace {

/// The places in a record that hold what belongs to one precision.
template <typename Real>
struct RealFields;
template <>
struct RealFields<float> {
    static constexpr auto kPlan = &DftDescriptor::plan_real_single;
    static constexpr DftPackRoutine DftDescriptor::*kPack[2] = {&DftDescriptor::real_pack_forward_single,
                                                                &DftDescriptor::real_pack_backward_single};
};
template <>
struct RealFields<double> {
    static constexpr auto kPlan = &DftDescriptor::plan_real_double;
    static constexpr DftPackRoutine DftDescriptor::*kPack[2] = {&DftDescriptor::real_pack_forward_double,
                                                                &DftDescriptor::real_pack_backward_double};
};

/// The pack stage of one layout, precision and direction.
template <DftCode format, Direction direction, typename Real>
std::int32_t Pack(const void* input, void* output, const void* plan, void* work) {
    const auto run = direction == kForward ? real_pack_forward<format, Real> : real_pack_backward<format, Real>;
    return run(static_cast<const Real*>(input), static_cast<Real*>(output),
               static_cast<const BasicRealDftPlan<Real>*>(plan), work);
}

void Scale(float* line, int count, float scale) {
    const int increment = 1;
    ScaleVector(&count, &scale, line, &increment);
}

void Scale(double* line, int count, double scale) {
    for (int k = 0; k < count; ++k) {
        line[k] *= scale;
    }
}

template <Direction direction, typename Real>
std::int32_t Transform(void* input, void* output, DftDescriptor* record, void* work) {
    const DftPackRoutine pack = record->*RealFields<Real>::kPack[direction];
    const std::int32_t status = pack(input, output, record->*RealFields<Real>::kPlan, work);
    if (status != kPlanOk) {
        return StatusOfPlan(status);
    }
    auto* const line = static_cast<Real*>(output);
    const bool isFull = record->packed_format == DFT_PACK_FULL;
    if (direction == kBackward && isFull && record->placement == DFT_INPLACE) {
        line[record->length] = 0;
    }
    const Real scale = ScaleFactor<Real>(*record, direction);
    if (scale != 1) {
        // Required: the zero at the end of the full layout of an even length is left alone, the one at index 1 is not.
        // Pinned by RealTransform.EqualsTheDefinitionInEveryLayout.
        Scale(line, record->length + (direction == kForward && isFull ? 1 : 0), scale);
    }
    return DFT_OK;
}

template <DftCode format, typename Real>
void StorePackStages(DftDescriptor* record) {
    record->*RealFields<Real>::kPack[kForward] = Pack<format, kForward, Real>;
    record->*RealFields<Real>::kPack[kBackward] = Pack<format, kBackward, Real>;
}

template <typename Real>
bool InstallPackStages(DftDescriptor* record) {
    switch (record->packed_format) {
    case DFT_PACK_FULL:
        StorePackStages<DFT_PACK_FULL, Real>(record);
        return true;
    case DFT_PACK_TIGHT:
        StorePackStages<DFT_PACK_TIGHT, Real>(record);
        return true;
    case DFT_PACK_NATIVE:
        StorePackStages<DFT_PACK_NATIVE, Real>(record);
        return true;
    default:
        return false;
    }
}

template <typename Real>
std::int32_t InstallPlan(DftDescriptor* record) {
    BasicRealDftPlan<Real>*& plan = record->*RealFields<Real>::kPlan;
    const std::int32_t status = real_plan_create(&plan, record->length, kUnscaled, 0);
    return status == kPlanOk ? real_plan_work_size(plan, &record->workspace_need) : status;
}

} // namespace

std::int32_t real_forward_single(void* input, void* output, DftDescriptor* record, void* work) {
    return Transform<kForward, float>(input, output, record, work);
}

std::int32_t real_forward_double(void* input, void* output, DftDescriptor* record, void* work) {
    return Transform<kForward, double>(input, output, record, work);
}

std::int32_t real_backward_single(void* input, void* output, DftDescriptor* record, void* work) {
    return Transform<kBackward, float>(input, output, record, work);
}

std::int32_t real_backward_double(void* input, void* output, DftDescriptor* record, void* work) {
    return Transform<kBackward, double>(input, output, record, work);
}

bool install_pack_stages(DftDescriptor* record) {
    return record->precision == DFT_SINGLE ? InstallPackStages<float>(record) : InstallPackStages<double>(record);
}

std::int32_t install_real_plan(DftDescriptor* record) {
    return record->precision == DFT_SINGLE ? InstallPlan<float>(record) : InstallPlan<double>(record);
}

} // namespace dft
