#include "dft/descriptor/descriptor_routines.h"

#include "dft/base/plan_status.h"
#include "dft/base/variant.h"
#include "dft/memory/engine_memory.h"
#include "dft/plans/general_routines.h"
#include "dft/pow2/pow2.h"
#include "dft/real/real_routines.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace dft {

namespace {

bool IsSingle(const DftDescriptor& record) {
    return record.precision == DFT_SINGLE;
}

bool IsPowerOfTwo(const DftDescriptor& record) {
    return std::has_single_bit(static_cast<std::uint32_t>(record.length));
}

bool HasUnitStrides(const DftDescriptor& record) {
    return record.input_stride == 1 && record.output_stride == 1;
}

std::int32_t OneShot(const DftDescriptor& head) {
    if (head.rank != 1 || !HasUnitStrides(head)) {
        return 0;
    }
    const DftTuning& tuning = dft_tuning();
    const int precision = IsSingle(head) ? 0 : 1;
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
std::int32_t BuildGeneral(DftDescriptor& record, BasicDftPlan<Real>*& plan) {
    std::int32_t status = dft_plan_create(&plan, record.length, kUnscaled, 0);
    if (status == kPlanOk) {
        int bytes = 0;
        status = dft_plan_work_size(plan, &bytes);
        record.workspace_need = bytes;
    }
    return StatusOfPlan(status);
}

/// A twiddle table of 3/2 elements a point, and 64 more for its alignment.
template <typename Real>
std::int32_t BuildPowerOfTwo(const DftDescriptor& record, Complex<Real>*& table,
                             void (*fill)(int log2_length, void* block)) {
    const std::int64_t length = record.length;
    const std::int64_t pairs = sizeof(Real) == sizeof(float) ? 3 * length / 2 + 64 : 3 * length + 64;
    const std::int64_t bytes = pairs * 8;
    void* const block = std::in_range<std::ptrdiff_t>(bytes) ? plan_alloc(static_cast<std::ptrdiff_t>(bytes)) : nullptr;
    if (block == nullptr) {
        return DFT_NO_MEMORY;
    }
    fill(record.log2_length, block);
    table = static_cast<Complex<Real>*>(block);
    return DFT_OK;
}

std::int32_t BuildComplex(DftDescriptor& record) {
    // As in compute, whatever is not in place is out of place.
    const bool toAnotherLine = record.placement != DFT_INPLACE && HasUnitStrides(record);
    record.general_length = !IsPowerOfTwo(record) || toAnotherLine ? 1 : 0;
    if (record.general_length == 1) {
        if (IsSingle(record)) {
            record.backward_single = general_backward_single;
            record.forward_single = general_forward_single;
            return BuildGeneral(record, record.plan_complex_single);
        }
        record.backward_double = general_backward_double;
        record.forward_double = general_forward_double;
        return BuildGeneral(record, record.plan_complex_double);
    }
    if (IsSingle(record)) {
        record.backward_single = c1d_backward_pow2;
        record.forward_single = c1d_forward_pow2;
        record.c1d_back_dft = c1d_back_dft;
        record.c1d_forw_dft = c1d_forw_dft;
        return BuildPowerOfTwo(record, record.table_single, c1d_table_build);
    }
    record.backward_double = z1d_backward_pow2;
    record.forward_double = z1d_forward_pow2;
    record.z1d_back_dft = z1d_back_dft;
    record.z1d_forw_dft = z1d_forw_dft;
    return BuildPowerOfTwo(record, record.table_double, z1d_table_build);
}

std::int32_t BuildReal(DftDescriptor& record) {
    if (IsSingle(record)) {
        record.backward_single = real_backward_single;
        record.forward_single = real_forward_single;
    } else {
        record.backward_double = real_backward_double;
        record.forward_double = real_forward_double;
    }
    if (!install_pack_stages(&record)) {
        return DFT_UNSUPPORTED;
    }
    record.general_length = IsPowerOfTwo(record) ? 0 : 1;
    return StatusOfPlan(install_real_plan(&record));
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
        const std::int32_t status = head->forward_domain == DFT_COMPLEX ? BuildComplex(*record) : BuildReal(*record);
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
