// The classes of processors, and the members of `KernelTable` that suit each.
#pragma once

#include "claribox/KernelTable.h"

/// Processors by the widest of the instruction sets distinguished here, in rising order.
enum class ProcessorClass { Plain, MMX, SSE, SSE2 };

inline constexpr ProcessorClass ProcessorClasses[] = {ProcessorClass::Plain, ProcessorClass::MMX, ProcessorClass::SSE,
                                                      ProcessorClass::SSE2};

/// The full set of members of one class. The table in force is one of these sets.
KernelTableSlots KernelMembers(ProcessorClass processorClass);

/// The class of a processor with these flags: SSE2, SSE, MMX are asked in this order and the first set one decides,
/// whatever the others say.
ProcessorClass ProcessorClassOf(bool hasMMX, bool hasSSE, bool hasSSE2);

/// The class of this machine by the flags of the census, whose members are in `KernelTable`; Plain before the census.
ProcessorClass ActiveProcessorClass();

/// "plain", "MMX", "SSE" or "SSE2".
const char* ProcessorClassName(ProcessorClass processorClass);
