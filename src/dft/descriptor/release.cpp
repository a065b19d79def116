#include "dft/descriptor/descriptor_routines.h"

#include "dft/memory/engine_memory.h"
#include "dft/plans/dft_plan.h"
#include "dft/real/real_plan.h"

namespace dft {

namespace {

template <typename Owned>
void Release(Owned*& owned, void (*release)(Owned*)) {
    if (owned != nullptr) {
        release(owned);
        owned = nullptr;
    }
}

template <typename Element>
void ReleaseTable(Element* table) {
    plan_free(table);
}

} // namespace

void ReleasePlans(DftDescriptor* head) {
    DftDescriptor* record = head;
    while (record->next != nullptr) {
        record = record->next;
    }
    for (; record != nullptr; record = record->previous) {
        Release(record->plan_complex_double, dft_plan_free<double>);
        Release(record->plan_complex_single, dft_plan_free<float>);
        Release(record->table_double, ReleaseTable<Complex<double>>);
        Release(record->table_single, ReleaseTable<Complex<float>>);
        Release(record->plan_real_double, real_plan_free<double>);
        Release(record->plan_real_single, real_plan_free<float>);
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
