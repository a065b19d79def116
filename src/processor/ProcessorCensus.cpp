#include "processor/ProcessorCensus.h"

int CensusPackages = 0;
int CensusCoresPerPackage = 0;
int CensusThreadsPerCore = 0;

namespace {

struct CensusAtLoad {
    CensusAtLoad() { CountProcessors(CensusPackages, CensusCoresPerPackage, CensusThreadsPerCore); }
} const censusAtLoad;

} // namespace
