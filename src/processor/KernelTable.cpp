#include "processor/KernelTable.h"

#include "claribox/KernelTable.h"
#include "processor/KernelMembers.h"
#include "processor/LoadOrder.h"
#include "processor/PlainSet.h"
#include "processor/ProcessorCensus.h"

#include <cstdlib>

// Holds plain members before any code runs, so that even code that comes before the load finds a table that works.
constinit KernelTableSlots KernelTable = processor::plainSet;

KernelTableBase::KernelTableBase() {
    ProcessorCensus();
    CountProcessors(CensusPackages, CensusCoresPerPackage, CensusThreadsPerCore);
}

KernelTableFiller::~KernelTableFiller() {
    const KernelTableSlots members = KernelMembers(ActiveProcessorClass());
    KernelTable.ExpandU8ToComplex = members.ExpandU8ToComplex;
    KernelTable.PackComplexToU8 = members.PackComplexToU8;
    KernelTable.ExpandF32ToComplex = members.ExpandF32ToComplex;
    KernelTable.ScaleF32 = members.ScaleF32;
    KernelTable.DotF32 = members.DotF32;
    KernelTable.DecimateU8 = members.DecimateU8;
}

KernelTableBase::~KernelTableBase() {
    const KernelTableSlots members = KernelMembers(ActiveProcessorClass());
    KernelTable.PackS32ToU8 = members.PackS32ToU8;
    KernelTable.PackF32ToU8 = members.PackF32ToU8;
    KernelTable.ExpandU8ToF32 = members.ExpandU8ToF32;
    KernelTable.Copy = members.Copy;
}

namespace {

void DoNothing() {}

struct KernelTableAtLoad {
    KernelTableAtLoad() {
        const KernelTableBase* const filler = new KernelTableFiller;
        delete filler;
        // Required, though without effect, so that no test can pin it: the slots outlive all code that could call them.
        std::atexit(DoNothing);
    }
};

CLARIBOX_AT_LOAD(1) const processor::ConstantGroup constantsBeforeTable;
CLARIBOX_AT_LOAD(2) const KernelTableAtLoad tableAtLoad;
CLARIBOX_AT_LOAD(3) const processor::ConstantGroup constantsAfterTable;
// Step 4, which has its own group of constants: the filter sets of src/wavelet.
CLARIBOX_AT_LOAD(5) const processor::ConstantGroup constantsAfterFilterSets;

} // namespace
