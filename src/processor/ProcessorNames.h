// What a processor is called, by vendor, family and model.
#pragma once

#include "processor/ProcessorPort.h"

namespace processor {

/// What the name of a processor goes by.
struct NameTraits {
    const char (&vendor)[13];
    std::uint32_t family; ///< on "GenuineIntel" with the extended family added
    std::uint32_t model;  ///< on "GenuineIntel" with the extended model above
    std::uint32_t stepping;
    std::uint32_t brandIndex; ///< leaf 1 EBX bits 0 to 7
};

/// Stores the display name of the processor, terminated; it may be empty. Reads leaf 2 and the extended leaves where
/// the name depends on them.
void StoreName(ProcessorPort& port, const NameTraits& traits, char (&name)[49]);

/// Drops leading blanks, and a clock frequency ("1.80GHz", "800 MHz") with all that follows it and the blanks before
/// it.
void CleanName(char (&name)[49]);

} // namespace processor
