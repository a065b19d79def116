#include "processor/ProcessorCensus.h"
#include "processor/ProcessorPort.h"

#include <cstring>

// Leaves and bit fields: Intel, "Processor Identification and the CPUID Instruction", application note 485.
namespace processor {
namespace {

constexpr std::uint32_t Field(std::uint32_t value, unsigned first, unsigned bits) {
    return (value >> first) & ((1U << bits) - 1U);
}

bool IsGenuineIntel(const CpuidRegisters& leaf0) {
    const std::uint32_t vendor[3] = {leaf0.ebx, leaf0.edx, leaf0.ecx};
    return std::memcmp(vendor, "GenuineIntel", sizeof vendor) == 0;
}

/// Returns the cores of one package, 1..64; 1 where the processor does not tell.
int CoresPerPackage(ProcessorPort& port) {
    CpuidRegisters leaf0;
    CpuidRegisters leaf4;
    // Processors answer a leaf above their highest one with the data of another: the highest has to be asked first.
    if (!port.ReadCpuid(0, 0, leaf0) || !IsGenuineIntel(leaf0) || leaf0.eax < 4 || !port.ReadCpuid(4, 0, leaf4)) {
        return 1;
    }
    return static_cast<int>(Field(leaf4.eax, 26, 6)) + 1;
}

/// Reads `leaf1`. A processor without CPUID, or without leaf 1, counts as one without hyper-threading; so does, by
/// rule, any of family 6, though bit 28 is set there as well where a package has several cores.
bool HyperThreadingPossible(ProcessorPort& port, CpuidRegisters& leaf1) {
    CpuidRegisters leaf0;
    if (!port.ReadCpuid(0, 0, leaf0) || !port.ReadCpuid(1, 0, leaf1)) {
        return false;
    }
    const bool familyFits = Field(leaf1.eax, 8, 4) == 15 || Field(leaf1.eax, 20, 8) != 0;
    return familyFits && IsGenuineIntel(leaf0) && Field(leaf1.edx, 28, 1) != 0;
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
    // The first one seen decides, and each visit is a move between processors: the rest is spared.
    for (std::size_t number = 0; number < process.size() && !seen; ++number) {
        if (process[number] && port.SetAffinity(ProcessorSet().set(number))) {
            port.Yield();
            seen = (port.LocalApicIdentifier() | mask) > mask;
        }
    }
    port.SetAffinity(process);
    return seen;
}

/// Finds the logical processors of one package in `siblings` (0 where they cannot be told) and turns `packages`, on
/// entry the logical processors of the system, into the packages they make up.
HyperThreadingStatus DetectHyperThreading(ProcessorPort& port, int& packages, int& siblings) {
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

} // namespace
} // namespace processor

int CountProcessors(processor::ProcessorPort& port, int& packages, int& coresPerPackage, int& threadsPerCore) {
    packages = port.ProcessorCount();
    coresPerPackage = processor::CoresPerPackage(port);
    int siblings = 0;
    const int status = processor::DetectHyperThreading(port, packages, siblings);
    // Required: siblings are those of the package, or 1 where hyper-threading is not possible, and the division drops
    // its remainder. Several cores without hyper-threading thus have 0 threads each, which CountProcessorsTest pins.
    threadsPerCore = siblings / coresPerPackage;
    return status;
}

int CountProcessors(int& packages, int& coresPerPackage, int& threadsPerCore) {
    return CountProcessors(processor::MachinePort(), packages, coresPerPackage, threadsPerCore);
}
