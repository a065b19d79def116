// Routine slots of a complex dimension that a general plan serves.
#pragma once

#include "dft/base/record.h"

namespace dft {

/// DftRoutine by the plan of the record's precision, then the scale factor of the direction where it is not 1.
std::int32_t general_forward_single(void* input, void* output, DftDescriptor* record, void* work);
std::int32_t general_backward_single(void* input, void* output, DftDescriptor* record, void* work);
std::int32_t general_forward_double(void* input, void* output, DftDescriptor* record, void* work);
std::int32_t general_backward_double(void* input, void* output, DftDescriptor* record, void* work);

} // namespace dft
