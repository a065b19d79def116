// All the census reads from, and does to, the machine it runs on, so that tests can describe machines as data.
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>

namespace processor {

/// Logical processors by their number in the operating system; bit n stands for processor n.
constexpr std::size_t kMaxProcessors = 1024;
using ProcessorSet = std::bitset<kMaxProcessors>;

/// What the CPUID instruction leaves in its four registers.
struct CpuidRegisters {
    std::uint32_t eax = 0;
    std::uint32_t ebx = 0;
    std::uint32_t ecx = 0;
    std::uint32_t edx = 0;
};

/// What `ProcessorPort::ThreadPriority` returns where the priority cannot be read.
constexpr int kUnknownPriority = 0x7FFFFFFF;

/// The priority that runs before all others a thread of an ordinary process can have.
constexpr int kTimeCriticalPriority = 15;

/// The machine as the census sees it. Not for use from two threads at once: affinity and priority are the
/// caller's own.
class ProcessorPort {
public:
    /// Reads CPUID with EAX = `leaf` and ECX = `subleaf` into `registers`. Where the processor has no CPUID (leaf 0
    /// tells), returns false with all registers zero. A leaf above the highest may do the same or give another's data:
    /// callers ask for the highest leaf first.
    virtual bool ReadCpuid(std::uint32_t leaf, std::uint32_t subleaf, CpuidRegisters& registers) = 0;

    /// Returns the initial local APIC identifier (CPUID leaf 1, EBX bits 24 to 31) of the processor that runs the call.
    virtual std::uint8_t LocalApicIdentifier() = 0;

    /// Returns the number of logical processors the operating system has in use, 1 or more.
    virtual int ProcessorCount() = 0;

    /// Stores the processors the caller may run on in `process` and all those in use in `system`. Returns false, with
    /// both sets empty, where that cannot be found out.
    virtual bool ReadAffinity(ProcessorSet& process, ProcessorSet& system) = 0;

    /// Confines the caller to `processors`. Returns false and changes nothing where the system refuses.
    virtual bool SetAffinity(const ProcessorSet& processors) = 0;

    /// Gives up the rest of the time slice; after `SetAffinity` the caller goes on where it was sent to.
    virtual void Yield() = 0;

    /// Returns the ticks a second of the system's counter, or 0 where there is none.
    virtual std::uint64_t CounterFrequency() = 0;

    /// Returns the system's counter, in ticks since any time. It never stands still for long.
    virtual std::uint64_t Counter() = 0;

    /// Returns the processor's time stamp counter (RDTSC), in cycles. Only for processors that have one.
    virtual std::uint64_t TimeStamp() = 0;

    /// Returns the priority of the calling thread, or `kUnknownPriority`, after which nobody may set one.
    virtual int ThreadPriority() = 0;

    /// Sets the priority of the calling thread: one that `ThreadPriority` returned, or `kTimeCriticalPriority`.
    virtual void SetThreadPriority(int priority) = 0;

protected:
    ~ProcessorPort() = default; // Nobody owns a port through this class.
};

/// Returns the port to the machine the library runs on.
ProcessorPort& MachinePort();

} // namespace processor
