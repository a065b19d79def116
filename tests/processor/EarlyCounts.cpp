// A host linked with the archive that reads the counts alone, before its own main: the load that fills them has to come
// along though nothing else of the library is used.
#include "processor/ProcessorCensus.h"

#include <cstdio>

namespace {

const int kEarlyCores = CensusCoresPerPackage;

} // namespace

int main() {
    if (kEarlyCores < 1) {
        std::fprintf(stderr, "%d cores before main: the counts were not filled\n", kEarlyCores);
        return 1;
    }
    return 0;
}
