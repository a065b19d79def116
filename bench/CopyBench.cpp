#include "CopyBench.h"

#include "ProcessorTime.h"
#include "Repetitions.h"
#include "processor/KernelMembers.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace bench {
namespace {

constexpr std::uint32_t kSizes[] = {64,        256,       1u << 10,  4u << 10,  16u << 10,  32u << 10, 48u << 10,
                                    64u << 10, 96u << 10, 3151 * 64, 3152 * 64, 256u << 10, 1u << 20,  2u << 20,
                                    4u << 20,  8u << 20,  16u << 20, 32u << 20, 64u << 20};

using Copy = void* (*)(void*, const void*, std::uint32_t);

struct FreeAligned {
    void operator()(void* block) const { ChAlignedFree(block); }
};
using Block = std::unique_ptr<void, FreeAligned>;

Block MakeBlock(std::uint32_t size, int first) {
    Block block(ChAlignedAlloc(size, 64));
    auto* const bytes = static_cast<std::uint8_t*>(block.get());
    for (std::uint32_t k = 0; k < size; ++k) {
        bytes[k] = static_cast<std::uint8_t>(first + static_cast<int>(k % 251));
    }
    return block;
}

void Measure(benchmark::State& state, Copy copy, std::uint32_t size) {
    const Block source = MakeBlock(size, 1);
    const Block destination = MakeBlock(size, 2);
    copy(destination.get(), source.get(), size);
    if (std::memcmp(destination.get(), source.get(), size) != 0) {
        state.SkipWithError("the copy differs from its source");
        return;
    }
    // A few microseconds at least, beside which reading the clock costs little.
    const std::uint32_t copies = std::max(1u, (256u << 10) / size);
    double total = 0.0;
    for ([[maybe_unused]] auto _ : state) {
        const double start = ProcessorSeconds();
        for (std::uint32_t k = 0; k < copies; ++k) {
            copy(destination.get(), source.get(), size);
        }
        const double seconds = ProcessorSeconds() - start;
        state.SetIterationTime(seconds);
        total += seconds;
    }
    const double kibibytes = static_cast<double>(state.iterations()) * copies * size / 1024.0;
    state.counters["ns_per_KiB"] = 1e9 * total / kibibytes;
}

} // namespace

void RegisterCopyBenchmarks() {
    struct Subject {
        const char* name;
        Copy copy;
    };
    std::vector<Subject> subjects = {{"memcpy", KernelMembers(ProcessorClass::Plain).Copy}};
    if (ActiveProcessorClass() >= ProcessorClass::SSE) {
        subjects.push_back({"streaming", KernelMembers(ProcessorClass::SSE).Copy});
    }
    for (const std::uint32_t size : kSizes) {
        for (const Subject& subject : subjects) {
            const std::string name = "Copy/" + std::to_string(size) + "/" + subject.name;
            RegisterRepeated(name, benchmark::kMicrosecond, size > (1u << 20) ? 4 : 64, 21,
                             [copy = subject.copy, size](benchmark::State& state) { Measure(state, copy, size); });
        }
    }
}

} // namespace bench
