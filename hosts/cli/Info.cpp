#include "Info.h"

#include "Errors.h"

// The command is linked against the library's inner archive for this: a host sees only the exported surface.
#include "processor/ProcessorCensus.h"

#include <cstdio>

namespace cli {

int PrintInfo() {
    std::printf("claribox              %s\n", CLARIBOX_VERSION);
    const auto count = [](const char* what, int value) {
        if (value < 0) {
            std::printf("%-21s unknown\n", what);
        } else {
            std::printf("%-21s %d\n", what, value);
        }
    };
    count("processor packages", CensusPackages);
    count("cores per package", CensusCoresPerPackage);
    count("threads per core", CensusThreadsPerCore);
    return std::fflush(stdout) == 0 ? ExitDone : ExitPictureFailed;
}

} // namespace cli
