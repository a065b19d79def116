// Reading what CPUID packs into its registers. Leaves and bit fields: Intel, "Processor Identification and the CPUID
// Instruction", application note 485.
#pragma once

#include "processor/ProcessorPort.h"

#include <cstring>
#include <string_view>

namespace processor {

/// Returns `bits` (1..31) bits of `value` from bit `first` on.
constexpr std::uint32_t Field(std::uint32_t value, unsigned first, unsigned bits) {
    return (value >> first) & ((1U << bits) - 1U);
}

/// Stores the twelve characters of leaf 0 and a terminator.
inline void StoreVendor(const CpuidRegisters& leaf0, char (&vendor)[13]) {
    std::memcpy(vendor, &leaf0.ebx, 4);
    std::memcpy(vendor + 4, &leaf0.edx, 4);
    std::memcpy(vendor + 8, &leaf0.ecx, 4);
    vendor[12] = '\0';
}

inline bool IsGenuineIntel(const char (&vendor)[13]) {
    return std::string_view(vendor) == "GenuineIntel";
}

/// Returns the highest extended leaf; 0x80000000 or less where there are none.
inline std::uint32_t HighestExtendedLeaf(ProcessorPort& port) {
    CpuidRegisters registers;
    port.ReadCpuid(0x80000000, 0, registers);
    return registers.eax;
}

} // namespace processor
