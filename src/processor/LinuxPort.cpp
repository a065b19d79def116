#include "processor/ProcessorPort.h"

#include <algorithm>
#include <climits>
#include <cpuid.h>
#include <ctime>
#include <sched.h>
#include <unistd.h>
#include <x86intrin.h>

namespace processor {
namespace {

static_assert(kMaxProcessors == CPU_SETSIZE);

/// Linux moves single threads: the affinity read and set here is that of the calling thread, which spares the other
/// threads of the host the moves.
class LinuxPort final : public ProcessorPort {
public:
    bool ReadCpuid(std::uint32_t leaf, std::uint32_t subleaf, CpuidRegisters& registers) override {
        registers = {};
        return __get_cpuid_count(leaf, subleaf, &registers.eax, &registers.ebx, &registers.ecx, &registers.edx) != 0;
    }

    std::uint8_t LocalApicIdentifier() override {
        CpuidRegisters registers;
        ReadCpuid(1, 0, registers);
        return static_cast<std::uint8_t>(registers.ebx >> 24);
    }

    int ProcessorCount() override {
        return static_cast<int>(std::clamp(sysconf(_SC_NPROCESSORS_ONLN), 1L, long{INT_MAX}));
    }

    bool ReadAffinity(ProcessorSet& process, ProcessorSet& system) override {
        process.reset();
        system.reset();
        cpu_set_t mask;
        // Fails, among other reasons, on a kernel built for more processors than the set holds.
        if (sched_getaffinity(0, sizeof mask, &mask) != 0) {
            return false;
        }
        for (std::size_t number = 0; number < kMaxProcessors; ++number) {
            process[number] = CPU_ISSET(number, &mask);
        }
        system = process;
        // The kernel names no processor here that is not in use, so equal numbers mean equal sets. Where some are
        // missing, which ones does not matter: the first that the process lacks are taken for them.
        const auto inUse = std::min(static_cast<std::size_t>(ProcessorCount()), kMaxProcessors);
        for (std::size_t number = 0; system.count() < inUse; ++number) {
            system.set(number);
        }
        return true;
    }

    bool SetAffinity(const ProcessorSet& processors) override {
        cpu_set_t mask;
        CPU_ZERO(&mask);
        for (std::size_t number = 0; number < kMaxProcessors; ++number) {
            if (processors[number]) {
                CPU_SET(number, &mask);
            }
        }
        return sched_setaffinity(0, sizeof mask, &mask) == 0;
    }

    void Yield() override { sched_yield(); }

    std::uint64_t CounterFrequency() override { return kNanosecondsASecond / kNanosecondsATick; }

    std::uint64_t Counter() override {
        timespec now = {};
        clock_gettime(CLOCK_MONOTONIC, &now);
        return static_cast<std::uint64_t>(now.tv_sec) * CounterFrequency() +
               static_cast<std::uint64_t>(now.tv_nsec) / kNanosecondsATick;
    }

    std::uint64_t TimeStamp() override { return __rdtsc(); }

    /// A thread may lower its priority here at will, but needs a privilege to raise it, even back to where it was. A
    /// library has no business asking for that: the priority is left alone, and a disturbed pass is repeated instead.
    int ThreadPriority() override { return kUnknownPriority; }

    void SetThreadPriority(int) override {}

private:
    static constexpr std::uint64_t kNanosecondsASecond = 1000000000;
    static constexpr std::uint64_t kNanosecondsATick = 100;
};

} // namespace

ProcessorPort& MachinePort() {
    static LinuxPort port;
    return port;
}

} // namespace processor
