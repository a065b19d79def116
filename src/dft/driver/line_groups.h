// Runs the routine of a record on many lines, several side by side or each where it lies where it is one of the
// engine's own.
#pragma once

#include "dft/base/record.h"
#include "dft/driver/line_transport.h"

#include <cstdint>

namespace dft {

/// Which statuses of a pass over columns count.
enum class StatusRule {
    AllTested,
    /// Required: a group of less than four adjacent columns at the end of a pass runs without a look at its statuses
    /// (Driver.StatusOfTheLastColumnsIsNotTested). Those of the engine's own routines are looked at all the same:
    /// lack of memory is never passed over.
    LastGroupUntested,
};

/// Transforms every line in place with the record's routine of the direction, scale factor included. A line that is not
/// contiguous is transformed in a copy, or, among columns of a power of two, where it lies. Lines may share elements:
/// they are then transformed one after the other, else in any order and grouping. `work` holds the record's
/// `workspace_need` bytes. DFT_NO_MEMORY or the first other status of a routine, after which the lines are in no
/// defined state.
template <typename Real>
std::int32_t TransformLines(DftDescriptor* record, Direction direction, const Lines<Real>& lines, StatusRule rule,
                            void* work);

} // namespace dft
