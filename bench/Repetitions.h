// How benchmarks are repeated.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <string>
#include <vector>

namespace bench {

/// Registers `measure`, which sets the time of each iteration itself. The minimum of the repetitions is reported too:
/// of many short ones it finds a quiet moment of the machine.
template <typename Measure>
void RegisterRepeated(const std::string& name, benchmark::TimeUnit unit, int iterations, int repetitions,
                      const Measure& measure) {
    benchmark::RegisterBenchmark(name.c_str(), measure)
        ->UseManualTime()
        ->Unit(unit)
        ->Iterations(iterations)
        ->Repetitions(repetitions)
        ->DisplayAggregatesOnly()
        ->ComputeStatistics(
            "min", [](const std::vector<double>& values) { return *std::min_element(values.begin(), values.end()); });
}

} // namespace bench
