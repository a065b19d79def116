#include "processor/ClockMeasurement.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace processor {
namespace {

constexpr int kMostPasses = 20;
constexpr std::uint64_t kLeadTicks = 50;   // waited for before a pass, so that it starts as the counter moves
constexpr std::uint64_t kPassTicks = 1000; // length of a pass
constexpr std::int64_t kTolerance = 3;     // in thirds of a MHz, of each estimate from the mean of the last three

/// Counter and time stamp at, as nearly as can be, one moment.
struct Moment {
    std::uint64_t counter;
    std::uint64_t timeStamp;
};

Moment SpinUntil(ProcessorPort& port, std::uint64_t since, std::uint64_t ticks) {
    Moment moment;
    do {
        moment.counter = port.Counter();
        moment.timeStamp = port.TimeStamp();
    } while (moment.counter - since < ticks);
    return moment;
}

/// `frequency` has to be 10 or more.
std::uint64_t Microseconds(std::uint64_t ticks, std::uint64_t frequency) {
    return ticks * 100000 / (frequency / 10);
}

/// Returns ticks a second, or 0 where there is no counter; likewise for one too slow to divide by ten.
std::uint64_t UsableFrequency(ProcessorPort& port) {
    const std::uint64_t frequency = port.CounterFrequency();
    return frequency < 10 ? 0 : frequency;
}

std::uint32_t Megahertz(std::uint64_t cycles, std::uint64_t microseconds) {
    return microseconds == 0 ? 0 : static_cast<std::uint32_t>(cycles / microseconds);
}

/// True if the last three estimates, oldest first, agree.
bool Agree(std::int64_t first, std::int64_t second, std::int64_t third) {
    const std::int64_t sum = first + second + third;
    return std::abs(2 * third - (first + second)) <= kTolerance && std::abs(3 * second - sum) <= kTolerance &&
           std::abs(3 * first - sum) <= kTolerance;
}

} // namespace

std::uint32_t MeasureTimeStampClock(ProcessorPort& port) {
    const int priority = port.ThreadPriority();
    const bool priorityKnown = priority != kUnknownPriority;
    const std::uint64_t frequency = UsableFrequency(port);
    if (frequency == 0) {
        return 0;
    }
    std::uint64_t cycles = 0;
    std::uint64_t microseconds = 0;
    std::uint32_t estimates[3] = {};
    for (int pass = 1; pass <= kMostPasses; ++pass) {
        if (priorityKnown) {
            port.SetThreadPriority(kTimeCriticalPriority);
        }
        const Moment start = SpinUntil(port, port.Counter(), kLeadTicks);
        const Moment end = SpinUntil(port, start.counter, kPassTicks);
        if (priorityKnown) {
            port.SetThreadPriority(priority);
        }
        // The low halves alone: a pass is far shorter than the time in which they wrap around.
        const std::uint32_t passCycles =
            static_cast<std::uint32_t>(end.timeStamp) - static_cast<std::uint32_t>(start.timeStamp);
        const std::uint64_t passMicroseconds = Microseconds(end.counter - start.counter, frequency);
        cycles += passCycles;
        microseconds += passMicroseconds;
        std::copy(estimates + 1, estimates + 3, estimates);
        estimates[2] = Megahertz(passCycles, passMicroseconds);
        if (pass >= 3 && Agree(estimates[0], estimates[1], estimates[2])) {
            break;
        }
    }
    return Megahertz(cycles, microseconds);
}

std::uint32_t EstimateClockByFamily(ProcessorPort& port, std::uint32_t family) {
    // Given, as are the factor 4000 and the 1 of all later families.
    static constexpr std::uint32_t cyclesByFamily[] = {0, 0, 0, 115, 47, 43, 38, 38, 38, 38, 38, 38};
    const std::uint64_t frequency = UsableFrequency(port);
    if (family < 3 || frequency == 0) {
        return 0;
    }
    const std::uint32_t cycles = 4000 * (family < std::size(cyclesByFamily) ? cyclesByFamily[family] : 1);
    std::uint64_t shortest = std::numeric_limits<std::uint64_t>::max();
    for (int pair = 0; pair < 10; ++pair) {
        const std::uint64_t first = port.Counter();
        shortest = std::min(shortest, port.Counter() - first);
    }
    return Megahertz(cycles, Microseconds(shortest, frequency));
}

} // namespace processor
