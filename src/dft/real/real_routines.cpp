#include "dft/real/real_routines.h"

#include "dft/base/plan_status.h"
#include "dft/base/record_fields.h"

extern "C" void sscal_(const int* count, const float* scale, float* x, const int* increment);

namespace dft {
namespace {

/// The pack stage of one layout, precision and direction.
template <DftCode format, Direction direction, typename Real>
std::int32_t Pack(const void* input, void* output, const void* plan, void* work) {
    const auto run = direction == kForward ? real_pack_forward<format, Real> : real_pack_backward<format, Real>;
    return run(static_cast<const Real*>(input), static_cast<Real*>(output),
               static_cast<const BasicRealDftPlan<Real>*>(plan), work);
}

void Scale(float* line, int count, float scale) {
    const int increment = 1;
    sscal_(&count, &scale, line, &increment);
}

void Scale(double* line, int count, double scale) {
    for (int k = 0; k < count; ++k) {
        line[k] *= scale;
    }
}

/// By format, from DFT_PACK_FULL on, and direction.
template <typename Real>
constexpr DftPackRoutine kPackStages[3][2] = {
    {Pack<DFT_PACK_FULL, kForward, Real>, Pack<DFT_PACK_FULL, kBackward, Real>},
    {Pack<DFT_PACK_TIGHT, kForward, Real>, Pack<DFT_PACK_TIGHT, kBackward, Real>},
    {Pack<DFT_PACK_NATIVE, kForward, Real>, Pack<DFT_PACK_NATIVE, kBackward, Real>}};

template <Direction direction, typename Real>
std::int32_t RealRoutine(void* input, void* output, DftDescriptor* record, void* work) {
    using Fields = RecordFields<Real>;
    const std::int32_t status = (record->*Fields::kPack[direction])(input, output, record->*Fields::kRealPlan, work);
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

} // namespace

template <typename Real>
std::int32_t InstallReal(DftDescriptor& record) {
    using Fields = RecordFields<Real>;
    record.*Fields::kRoutine[kForward] = RealRoutine<kForward, Real>;
    record.*Fields::kRoutine[kBackward] = RealRoutine<kBackward, Real>;
    if (record.packed_format < DFT_PACK_FULL || record.packed_format > DFT_PACK_NATIVE) {
        return DFT_UNSUPPORTED;
    }
    const auto& stages = kPackStages<Real>[record.packed_format - DFT_PACK_FULL];
    record.*Fields::kPack[kForward] = stages[kForward];
    record.*Fields::kPack[kBackward] = stages[kBackward];
    BasicRealDftPlan<Real>*& plan = record.*Fields::kRealPlan;
    const std::int32_t status = real_plan_create(&plan, record.length, kUnscaled, 0);
    return StatusOfPlan(status == kPlanOk ? real_plan_work_size(plan, &record.workspace_need) : status);
}

template std::int32_t InstallReal<float>(DftDescriptor&);
template std::int32_t InstallReal<double>(DftDescriptor&);

} // namespace dft
