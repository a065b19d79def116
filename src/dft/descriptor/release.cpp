#include "dft/descriptor/descriptor_routines.h"

#include "dft/base/record_fields.h"
#include "dft/memory/engine_memory.h"
#include "dft/plans/dft_plan.h"
#include "dft/real/real_plan.h"

#include <utility>

namespace dft {
namespace {

template <typename Real>
void ReleaseFields(DftDescriptor& record) {
    using Fields = RecordFields<Real>;
    dft_plan_free(std::exchange(record.*Fields::kPlan, nullptr));
    plan_free(std::exchange(record.*Fields::kTable, nullptr));
    real_plan_free(std::exchange(record.*Fields::kRealPlan, nullptr));
}

} // namespace

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
