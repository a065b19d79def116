#include "dft/descriptor/descriptor_routines.h"

#include "dft/base/record_fields.h"
#include "dft/memory/engine_memory.h"
#include "dft/plans/dft_plan.h"
#include "dft/real/real_plan.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <memory>
#include <utility>

namespace dft {
namespace {

/// What a domain or precision code means for the rest of creation.
std::int32_t CheckCodes(int precision, int domain, int rank) {
    if (domain == DFT_DOMAIN_RESERVED || (domain == DFT_REAL && rank > 1)) {
        return DFT_UNSUPPORTED;
    }
    const bool known =
        (domain == DFT_COMPLEX || domain == DFT_REAL) && (precision == DFT_SINGLE || precision == DFT_DOUBLE);
    return known ? DFT_OK : DFT_BAD_ARGUMENT;
}

void WriteDefaults(DftDescriptor& head) {
    head.ordering = DFT_ORDERED;
    head.cfg_b = DFT_DEFAULT_39;
    head.cfg_c = DFT_DEFAULT_42;
    head.cfg_d = DFT_DEFAULT_40;
    head.packed_format = DFT_PACK_FULL;
    head.number_of_transforms = 1;
    head.cfg_a = DFT_DEFAULT_37;
    head.placement = DFT_INPLACE;
    head.cfg_f = DFT_DEFAULT_51;
    head.cfg_g = DFT_DEFAULT_53;
    head.cfg_e = DFT_DEFAULT_46;
    head.commit_state = DFT_UNCOMMITTED;
}

/// The product wraps where a job has more elements than it can tell.
void WriteDimensions(DftDescriptor* records, int rank, const int* lengths) {
    std::uint32_t product = 1;
    for (int i = 0; i < rank; ++i) {
        DftDescriptor& record = records[i];
        const auto length = static_cast<std::uint32_t>(lengths[i]);
        std::memcpy(record.tag, "DFT", sizeof(record.tag));
        record.forward_scale_single = record.backward_scale_single = 1;
        record.forward_scale_double = record.backward_scale_double = 1;
        record.input_stride = record.output_stride = static_cast<std::int32_t>(product);
        product *= length;
        record.running_product = static_cast<std::int32_t>(product);
        record.rank = rank;
        record.dimension_index = i;
        record.length = lengths[i];
        record.log2_length = static_cast<std::int32_t>(std::bit_width(length)) - 1;
        record.general_length = std::has_single_bit(length) ? 0 : 1;
        record.longest_length = *std::max_element(lengths, lengths + rank);
        record.previous = i > 0 ? &records[i - 1] : nullptr;
        record.next = i + 1 < rank ? &records[i + 1] : nullptr;
    }
    records[0].running_product = static_cast<std::int32_t>(product);
}

template <typename Real>
void ReleaseFields(DftDescriptor& record) {
    using Fields = RecordFields<Real>;
    dft_plan_free(std::exchange(record.*Fields::kPlan, nullptr));
    plan_free(std::exchange(record.*Fields::kTable, nullptr));
    real_plan_free(std::exchange(record.*Fields::kRealPlan, nullptr));
}

} // namespace

std::int32_t CreateDescriptor(DftDescriptor** handle, const int* precision, const int* domain, const int* rank,
                              const int* lengths) {
    if (handle == nullptr || *rank < 1 || *rank > kMaximumRank ||
        std::any_of(lengths, lengths + *rank, [](int length) { return length < 1; })) {
        return DFT_BAD_ARGUMENT;
    }
    *handle = nullptr;
    void* const block = engine_alloc(static_cast<std::size_t>(*rank) * sizeof(DftDescriptor));
    if (block == nullptr) {
        return DFT_NO_MEMORY;
    }
    const std::int32_t status = CheckCodes(*precision, *domain, *rank);
    if (status != DFT_OK) {
        engine_free(block);
        return status;
    }
    auto* const records = static_cast<DftDescriptor*>(block);
    std::uninitialized_value_construct_n(records, *rank);
    records->forward_domain = *domain;
    records->precision = *precision;
    WriteDefaults(*records);
    WriteDimensions(records, *rank, lengths);
    *handle = records;
    return DFT_OK;
}

void ReleasePlans(DftDescriptor* head) {
    DftDescriptor* record = head;
    while (record->next != nullptr) {
        record = record->next;
    }
    for (; record != nullptr; record = record->previous) {
        ReleaseFields<double>(*record);
        ReleaseFields<float>(*record);
        record->workspace_need = 0;
    }
}

std::int32_t FreeDescriptor(DftDescriptor** handle) {
    if (handle == nullptr || *handle == nullptr) {
        return DFT_BAD_ARGUMENT;
    }
    if (!HasTag(**handle)) {
        return DFT_BAD_DESCRIPTOR;
    }
    ReleasePlans(*handle);
    engine_free(*handle);
    *handle = nullptr;
    return DFT_OK;
}

} // namespace dft
