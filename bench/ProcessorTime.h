// The clock of the benchmarks.
#pragma once

#include <ctime>

namespace bench {

/// Processor time of the process in seconds, which neighbours on the machine disturb less than the clock on the wall.
/// All subjects run on one thread; should one start more, they count as well.
inline double ProcessorSeconds() {
    std::timespec now;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

} // namespace bench
