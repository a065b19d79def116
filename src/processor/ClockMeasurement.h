// How fast the processor's clock runs, measured against the system's counter.
#pragma once

#include "processor/ProcessorPort.h"

namespace processor {

/// Returns the clock in MHz by time stamp counter. Spins through passes of a little over 1050 ticks of the system's
/// counter, at raised priority where the system allows it, until three passes in a row agree, 20 passes at most.
/// Returns 0 where the counter's frequency cannot be read or a pass is shorter than a microsecond.
std::uint32_t MeasureTimeStampClock(ProcessorPort& port);

/// Returns an estimate in MHz for a processor of this family that has no time stamp counter: the time of the shortest
/// of ten readings of the system's counter against a number of cycles that goes by the family. Returns 0 below family
/// 3, and where that time is not known or less than a microsecond.
std::uint32_t EstimateClockByFamily(ProcessorPort& port, std::uint32_t family);

} // namespace processor
