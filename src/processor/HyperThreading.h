// Hyper-threading: whether the logical processors in use share their packages.
#pragma once

#include "processor/ProcessorCensus.h"

namespace processor {

/// Stores in `siblings` the logical processors of one package, 1..255 (0 if unknown), and in `packages`
/// the packages that the logical processors of the system make up (-1 if unknown).
///
/// Only where the processor is a "GenuineIntel" whose family field is 15 or whose extended family is not 0, with the
/// feature bit of hyper-threading, does it
/// look at the affinity of the caller, visit the processors one by one and put the affinity back.
HyperThreadingStatus DetectHyperThreading(ProcessorPort& port, int& packages, int& siblings);

} // namespace processor
