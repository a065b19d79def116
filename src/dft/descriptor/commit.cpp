#include "dft/descriptor/descriptor_routines.h"

#include "dft/base/record_fields.h"
#include "dft/base/variant.h"
#include "dft/memory/engine_memory.h"
#include "dft/plans/dft_plan.h"
#include "dft/pow2/pow2.h"
#include "dft/real/real_routines.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace dft {
namespace {

bool HasUnitStrides(const DftDescriptor& record) {
    return record.input_stride == 1 && record.output_stride == 1;
}

std::int32_t OneShot(const DftDescriptor& head) {
    if (head.rank != 1 || !HasUnitStrides(head)) {
        return 0;
    }
    const DftTuning& tuning = dft_tuning();
    const int precision = head.precision == DFT_SINGLE ? 0 : 1;
    if (head.forward_domain == DFT_COMPLEX) {
        return head.number_of_transforms == 1 && head.length < tuning.one_shot_below[precision] ? 1 : 0;
    }
    const bool counts = head.packed_format != DFT_PACK_FULL || head.length < tuning.one_shot_real_below[precision];
    return counts ? head.number_of_transforms : 0;
}

void CopyConfiguration(const DftDescriptor& head, DftDescriptor& record) {
    record.forward_domain = head.forward_domain;
    record.precision = head.precision;
    record.number_of_transforms = head.number_of_transforms;
    record.packed_format = head.packed_format;
    record.ordering = head.ordering;
    record.placement = head.placement;
    record.cfg_a = head.cfg_a;
    record.cfg_b = head.cfg_b;
    record.cfg_e = head.cfg_e;
    record.cfg_f = head.cfg_f;
    record.cfg_g = head.cfg_g;
    record.input_offset = head.input_offset;
    record.output_offset = head.output_offset;
    record.input_distance = head.input_distance;
    record.output_distance = head.output_distance;
}

template <typename Real>
std::int32_t BuildGeneral(DftDescriptor& record) {
    using Fields = RecordFields<Real>;
    record.*Fields::kRoutine[kForward] = GeneralRoutine<kForward, Real>;
    record.*Fields::kRoutine[kBackward] = GeneralRoutine<kBackward, Real>;
    BasicDftPlan<Real>*& plan = record.*Fields::kPlan;
    const std::int32_t status = dft_plan_create(&plan, record.length, kUnscaled, 0);
    return StatusOfPlan(status == kPlanOk ? dft_plan_work_size(plan, &record.workspace_need) : status);
}

/// Stores the routines of a power of two and builds their table, of 3/2 elements a point and 64 more for alignment.
template <typename Real>
std::int32_t BuildPowerOfTwo(DftDescriptor& record) {
    constexpr bool isSingle = kPrecision<Real> == 0;
    using Fields = RecordFields<Real>;
    record.*Fields::kRoutine[kForward] = isSingle ? c1d_forward_pow2 : z1d_forward_pow2;
    record.*Fields::kRoutine[kBackward] = isSingle ? c1d_backward_pow2 : z1d_backward_pow2;
    record.*Fields::kThreaded[kForward] = isSingle ? c1d_forw_dft : z1d_forw_dft;
    record.*Fields::kThreaded[kBackward] = isSingle ? c1d_back_dft : z1d_back_dft;
    const std::int64_t length = record.length;
    const std::int64_t bytes = 8 * ((isSingle ? 3 * length / 2 : 3 * length) + 64);
    void* const block = std::in_range<std::ptrdiff_t>(bytes) ? plan_alloc(static_cast<std::ptrdiff_t>(bytes)) : nullptr;
    if (block == nullptr) {
        return DFT_NO_MEMORY;
    }
    (isSingle ? c1d_table_build : z1d_table_build)(record.log2_length, block);
    record.*Fields::kTable = static_cast<Complex<Real>*>(block);
    return DFT_OK;
}

template <typename Real>
std::int32_t Build(DftDescriptor& record) {
    record.general_length = std::has_single_bit(static_cast<std::uint32_t>(record.length)) ? 0 : 1;
    if (record.forward_domain != DFT_COMPLEX) {
        return InstallReal<Real>(record);
    }
    // As in compute, whatever is not in place is out of place.
    if (record.placement != DFT_INPLACE && HasUnitStrides(record)) {
        record.general_length = 1;
    }
    return record.general_length == 1 ? BuildGeneral<Real>(record) : BuildPowerOfTwo<Real>(record);
}

} // namespace

std::int32_t CommitDescriptor(DftDescriptor* const* handle) {
    DftDescriptor* const head = *handle;
    if (head == nullptr) {
        return DFT_BAD_ARGUMENT;
    }
    if (!HasTag(*head)) {
        return DFT_BAD_DESCRIPTOR;
    }
    ReleasePlans(head);
    head->one_shot = OneShot(*head);
    head->workspace_bytes = 0;
    std::int32_t index = 0;
    for (DftDescriptor* record = head; record != nullptr; record = record->next) {
        record->dimension_index = index++;
        record->commit_state = DFT_COMMITTED;
        CopyConfiguration(*head, *record);
        const std::int32_t status = head->precision == DFT_SINGLE ? Build<float>(*record) : Build<double>(*record);
        if (status != DFT_OK) {
            record->next = nullptr;
            ReleasePlans(head);
            return status;
        }
        head->workspace_bytes = std::max(head->workspace_bytes, record->workspace_need);
        if (record->unsupported_flag == 1) {
            return DFT_UNSUPPORTED;
        }
    }
    if (head->workspace_bytes <= 16) {
        head->workspace_bytes = 0;
    }
    return DFT_OK;
}

} // namespace dft
