#include "Threads.h"

#include "Errors.h"

// The command is linked against the library's inner archive for these: a host cannot ask for the serial forms.
#include "dft/memory/engine_memory.h"
#include "focus/PlaneWorkers.h"
#include "processor/ProcessorCensus.h"

#include <vips/vips8>

#include <algorithm>
#include <latch>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace cli {
namespace {

/// Those of libvips with a concurrency of 1: one that works and one that writes behind; and one that draws text.
constexpr int kFewestThreads = 3;

/// A system that grants this many does not limit them; counting further would take threads from other programs.
constexpr int kMostCounted = 128;

/// Counts up to `most` by starting them, all at once.
int ThreadsToBeHad(int most) {
    std::latch counted(1);
    std::vector<std::jthread> threads;
    try {
        while (static_cast<int>(threads.size()) < most) {
            threads.emplace_back([&counted] { counted.wait(); });
        }
    } catch (const std::system_error&) {
        // no more
    }
    counted.count_down();
    return static_cast<int>(threads.size());
}

void TakeSerialForms() {
    CensusPackages = CensusCoresPerPackage = CensusThreadsPerCore = 1;
    dft::serial_switch = 1;
    vips_concurrency_set(1);
}

} // namespace

int ThreadsOfOnePicture() {
    // The library has a worker for each plane; libvips keeps idle threads for a while.
    return 1 + 3 * dft::engine_maximum_threads() + vips_concurrency_get() + kFewestThreads - 1;
}

int PicturesAtOnce(int wanted) {
    const int ofOne = ThreadsOfOnePicture();
    const int asked = std::min(wanted * ofOne, std::max(ofOne, kMostCounted));
    const int had = ThreadsToBeHad(asked);
    if (had == asked) {
        return wanted;
    }
    if (had >= ofOne) {
        return had / ofOne;
    }
    TakeSerialForms();
    if (had < kFewestThreads) {
        throw std::runtime_error("no thread can be started beyond " + std::to_string(had) + ", where " +
                                 std::to_string(kFewestThreads) + " are needed; allow more, such as by ulimit -u");
    }
    return 1;
}

void RequireAllPlanes() {
    if (focus::WorkersLeftOut() > 0) {
        throw PictureError("a thread that it needs could not be started; try again, or allow more of them");
    }
}

} // namespace cli
