// The routines behind the front entries. Creation and commit take their numbers and the handle by address.
#pragma once

#include "dft/base/record.h"

#include <cstring>

namespace dft {

/// As dfti_create_descriptor; `lengths` holds `*rank` lengths, the fastest dimension first.
std::int32_t CreateDescriptor(DftDescriptor** handle, const int* precision, const int* domain, const int* rank,
                              const int* lengths);

/// As dfti_commit_descriptor.
std::int32_t CommitDescriptor(DftDescriptor* const* handle);

/// As dfti_free_descriptor.
std::int32_t FreeDescriptor(DftDescriptor** handle);

/// As dfti_compute_forward and dfti_compute_backward: in place or out of place, complex or real, single or double, as
/// the head's fields say.
std::int32_t Compute(DftDescriptor* head, Direction direction, void* data, void* output);

/// Releases the plans and tables of all records, from the last of the chain back to the head.
void ReleasePlans(DftDescriptor* head);

/// Whether a record begins with the letters that creation wrote.
inline bool HasTag(const DftDescriptor& record) {
    return std::memcmp(record.tag, "DFT", sizeof(record.tag)) == 0;
}

} // namespace dft
