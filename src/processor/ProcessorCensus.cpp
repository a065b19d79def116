#include "processor/ProcessorCensus.h"

#include "claribox/KernelTable.h"
#include "processor/ClockMeasurement.h"
#include "processor/CpuidFields.h"
#include "processor/HyperThreading.h"
#include "processor/ProcessorNames.h"

int CensusPackages = 0;
int CensusCoresPerPackage = 0;
int CensusThreadsPerCore = 0;

namespace {

constinit processor::CensusResults machineResults;

// The load of the kernel table runs the census: naming the table makes the linker bring that load along from the
// archive also where nothing but the results is used.
[[gnu::used]] const KernelTableSlots* const filledWithTheTable = &KernelTable;

} // namespace

// References, bound before any code runs, so that there is one copy and nobody but the census writes to it.
constinit const processor::CensusResults& processor::MachineResults = machineResults;
constinit const char (&ProcessorVendor)[13] = machineResults.vendor;
constinit const char (&ProcessorName)[49] = machineResults.name;
constinit const std::uint32_t& ProcessorMHz = machineResults.megahertz;
constinit const std::int32_t& ProcessorHTStatus = machineResults.status;

std::uint32_t ProcessorHasMMX() {
    return machineResults.hasMMX;
}

std::uint32_t ProcessorHasSSE() {
    return machineResults.hasSSE;
}

std::uint32_t ProcessorHasSSE2() {
    return machineResults.hasSSE2;
}

namespace processor {
namespace {

/// What Intel's processors report in leaf 1 beyond the fields all vendors share.
void ReadIntelFields(const CpuidRegisters& leaf1, CensusResults& results) {
    results.family += Field(leaf1.eax, 20, 8);
    results.model += Field(leaf1.eax, 16, 4) << 4;
    results.type = Field(leaf1.eax, 12, 2);
    results.hasSSE3 = Field(leaf1.ecx, 0, 1);
    results.hasMonitor = Field(leaf1.ecx, 3, 1);
}

void Read3DNow(ProcessorPort& port, CensusResults& results) {
    if (results.family <= 4 || HighestExtendedLeaf(port) <= 0x80000000) {
        return;
    }
    CpuidRegisters registers;
    port.ReadCpuid(0x80000001, 0, registers);
    results.has3DNow = Field(registers.edx, 31, 1);
    results.has3DNowExtensions = Field(registers.edx, 30, 1);
}

} // namespace
} // namespace processor

int ProcessorCensus(processor::ProcessorPort& port, processor::CensusResults& results) {
    using namespace processor;
    CpuidRegisters leaf0;
    if (!port.ReadCpuid(0, 0, leaf0)) {
        return -1;
    }
    results = {};
    StoreVendor(leaf0, results.vendor);
    CpuidRegisters leaf1;
    port.ReadCpuid(1, 0, leaf1);
    results.hasMMX = Field(leaf1.edx, 23, 1);
    results.hasSSE = Field(leaf1.edx, 25, 1);
    results.hasSSE2 = Field(leaf1.edx, 26, 1);
    results.family = Field(leaf1.eax, 8, 4);
    results.model = Field(leaf1.eax, 4, 4);
    results.stepping = Field(leaf1.eax, 0, 4);
    if (IsGenuineIntel(results.vendor)) {
        ReadIntelFields(leaf1, results);
    } else {
        Read3DNow(port, results);
    }
    StoreName(port, {results.vendor, results.family, results.model, results.stepping, Field(leaf1.ebx, 0, 8)},
              results.name);
    CleanName(results.name);
    const bool hasTimeStampCounter = Field(leaf1.edx, 4, 1) != 0;
    results.megahertz = hasTimeStampCounter ? MeasureTimeStampClock(port) : EstimateClockByFamily(port, results.family);
    // The status alone: CountProcessors makes the same walk again for the counts.
    int packages = 1;
    int siblings = 1;
    results.status = DetectHyperThreading(port, packages, siblings);
    return 0;
}

int ProcessorCensus() {
    return ProcessorCensus(processor::MachinePort(), machineResults);
}
