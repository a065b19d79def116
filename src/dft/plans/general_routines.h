// The descriptor routine of a complex dimension that a general plan serves.
#pragma once

#include "dft/base/record.h"

namespace dft {

/// DftRoutine by the plan of the record's precision, then the scale factor of the direction where it is not 1.
template <Direction direction, typename Real>
std::int32_t GeneralRoutine(void* input, void* output, DftDescriptor* record, void* work);

} // namespace dft
