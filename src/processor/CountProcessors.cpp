#include "processor/CpuidFields.h"
#include "processor/HyperThreading.h"
#include "processor/ProcessorCensus.h"

namespace processor {
namespace {

/// Returns the cores of one package, 1..64; 1 if the processor does not report it.
int CoresPerPackage(ProcessorPort& port) {
    CpuidRegisters leaf0;
    port.ReadCpuid(0, 0, leaf0);
    char vendor[13];
    StoreVendor(leaf0, vendor);
    CpuidRegisters leaf4;
    // Processors answer a leaf above their highest one with the data of another: the highest has to be asked first.
    if (!IsGenuineIntel(vendor) || leaf0.eax < 4 || !port.ReadCpuid(4, 0, leaf4)) {
        return 1;
    }
    return static_cast<int>(Field(leaf4.eax, 26, 6)) + 1;
}

} // namespace
} // namespace processor

int CountProcessors(processor::ProcessorPort& port, int& packages, int& coresPerPackage, int& threadsPerCore) {
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
