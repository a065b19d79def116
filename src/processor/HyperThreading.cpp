#include "processor/HyperThreading.h"

#include "processor/CpuidFields.h"

namespace processor {
namespace {

/// Reads `leaf1`. A processor without CPUID, or without leaf 1, counts as one without hyper-threading; so does, by
/// rule, any of family 6, though bit 28 is set there as well where a package has several cores.
bool HyperThreadingPossible(ProcessorPort& port, CpuidRegisters& leaf1) {
    CpuidRegisters leaf0;
    if (!port.ReadCpuid(0, 0, leaf0) || !port.ReadCpuid(1, 0, leaf1)) {
        return false;
    }
    char vendor[13];
    StoreVendor(leaf0, vendor);
    const bool familyFits = Field(leaf1.eax, 8, 4) == 15 || Field(leaf1.eax, 20, 8) != 0;
    return familyFits && IsGenuineIntel(vendor) && Field(leaf1.edx, 28, 1) != 0;
}

/// Visits the processors of `process` and tells whether one of them is not the first of the `siblings` (1..255) that
/// share a package, which the low bits of its local APIC identifier show. Affinity is put back to `process`.
bool SecondSiblingRuns(ProcessorPort& port, const ProcessorSet& process, std::uint32_t siblings) {
    // Ones above the bits that number the siblings; no bit is left from 129 siblings on.
    std::uint8_t mask = 255;
    for (std::uint32_t reach = 1; reach < siblings; reach *= 2) {
        mask = static_cast<std::uint8_t>(mask << 1);
    }
    bool seen = false;
    // The first one seen decides, and each visit is a move between processors: the rest is skipped.
    for (std::size_t number = 0; number < process.size() && !seen; ++number) {
        if (process[number] && port.SetAffinity(ProcessorSet().set(number))) {
            port.Yield();
            seen = (port.LocalApicIdentifier() | mask) > mask;
        }
    }
    port.SetAffinity(process);
    return seen;
}

} // namespace

const char* const HyperThreadingTexts[5] = {
    "HyperThreading technology not capable",        "HyperThreading technology enabled",
    "HyperThreading technology disabled",           "HyperThreading technology capable but not enabled",
    "HyperThreading technology cannot be detected",
};

HyperThreadingStatus DetectHyperThreading(ProcessorPort& port, int& packages, int& siblings) {
    packages = port.ProcessorCount();
    CpuidRegisters leaf1;
    if (!HyperThreadingPossible(port, leaf1)) {
        siblings = 1;
        return NotCapable;
    }
    siblings = static_cast<int>(Field(leaf1.ebx, 16, 8));
    if (siblings == 0) {
        return NotCapable;
    }
    ProcessorSet process;
    ProcessorSet system;
    if (!port.ReadAffinity(process, system) || process != system) {
        packages = -1;
        siblings = 0;
        return CannotBeDetected;
    }
    if (siblings == 1) {
        return Disabled; // No identifier can lie above a mask of all ones, so nothing needs to be visited.
    }
    if (!SecondSiblingRuns(port, process, static_cast<std::uint32_t>(siblings))) {
        return CapableNotEnabled;
    }
    packages /= siblings;
    return Enabled;
}

} // namespace processor
