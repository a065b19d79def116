// Runs a record's routine on many lines: in batches, or where they lie, if it is one of the engine's own.
#pragma once

#include "dft/base/record.h"
#include "dft/driver/line_transport.h"

#include <cstdint>

namespace dft {

/// Which statuses of a pass over columns count.
enum class StatusRule {
    AllTested,
    /// Required: the statuses of a last group of fewer than four adjacent columns are ignored
    /// (Driver.StatusOfTheLastColumnsIsNotTested), except those of the engine's own routines: lack of memory always
    /// counts.
    LastGroupUntested,
};

/// Transforms every line in place with the record's routine of the direction, scale factor included. Lines that are
/// not contiguous are transformed in a copy or, columns of a power of two, where they lie. Lines that share elements
/// are transformed one after the other, others in any order and grouping. `work` has the record's `workspace_need`
/// bytes. DFT_NO_MEMORY or the first other status of a routine, after which the lines are undefined.
template <typename Real>
std::int32_t TransformLines(DftDescriptor* record, Direction direction, const Lines<Real>& lines, StatusRule rule,
                            void* work);

} // namespace dft
