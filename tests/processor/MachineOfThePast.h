// A machine described as data, for the census to look at.
#pragma once

#include "processor/ProcessorPort.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

/// One logical processor: its number in the system, its local APIC identifier, and whether affinity may go to it alone.
struct LogicalProcessor {
    std::size_t number;
    std::uint8_t identifier;
    bool reachable = true;
};

struct MachineDescription {
    const char* vendor = "GenuineIntel"; // null: no CPUID
    std::uint32_t highestLeaf = 5;
    std::uint32_t signature = 0x00000F64; // leaf 1 EAX
    std::uint32_t siblings = 2;           // leaf 1 EBX bits 16 to 23
    std::uint32_t features = 1U << 28;    // leaf 1 EDX
    std::uint32_t cores = 1;              // leaf 4 EAX bits 26 to 31 hold one less
    std::vector<LogicalProcessor> processors = {{0, 0}, {1, 1}};
    std::vector<std::size_t> outOfBounds = {}; // processors of the system that the process may not use
    bool affinityReadable = true;

    std::uint32_t instructions = 0;    // leaf 1 ECX
    std::uint32_t brandIndex = 0xFF;   // leaf 1 EBX bits 0 to 7
    std::uint32_t cacheDescriptor = 0; // the last one of leaf 2
    std::uint32_t highestExtendedLeaf = 0;
    std::uint32_t extendedFeatures = 0; // leaf 0x80000001 EDX
    std::string brandString = {};       // up to 48 characters

    std::uint64_t frequency = 10000000;                // of the counter, ticks a second
    std::vector<std::uint64_t> ticksPerRead = {10};    // what one reading of the counter takes, over and over
    std::vector<std::uint64_t> cyclesPerRead = {1000}; // the same in cycles, for one pass each; the last for all others
    std::uint64_t firstTimeStamp = 0;
    int priority = 0;
};

/// Runs on the first processor at first. As on a real system, a move takes effect when the caller yields.
class MachineOfThePast final : public processor::ProcessorPort {
public:
    explicit MachineOfThePast(const MachineDescription& description) : machine(description) {
        for (const LogicalProcessor& processor : machine.processors) {
            process.set(processor.number);
        }
        affinity = process;
    }

    bool ReadCpuid(std::uint32_t leaf, std::uint32_t, processor::CpuidRegisters& registers) override {
        registers = {};
        if (machine.vendor == nullptr) {
            return false;
        }
        if (leaf == 0) {
            registers.eax = machine.highestLeaf;
            std::memcpy(&registers.ebx, machine.vendor, 4);
            std::memcpy(&registers.edx, machine.vendor + 4, 4);
            std::memcpy(&registers.ecx, machine.vendor + 8, 4);
        } else if (leaf == 1) {
            registers.eax = machine.signature;
            registers.ebx =
                std::uint32_t{LocalApicIdentifier()} << 24 | machine.siblings << 16 | 0xFF00 | machine.brandIndex;
            registers.ecx = machine.instructions;
            registers.edx = machine.features;
        } else if (leaf == 2) {
            registers = {0x7B7B7B01, 0x7B7B7B7B, 0x7B7B7B7B, machine.cacheDescriptor << 24 | 0x7B7B7B};
        } else if (leaf == 0x80000000) {
            registers.eax = machine.highestExtendedLeaf;
        } else if (leaf == 0x80000001) {
            registers.edx = machine.extendedFeatures;
        } else if (leaf >= 0x80000002 && leaf <= 0x80000004) {
            std::string text = machine.brandString;
            text.resize(48);
            std::memcpy(&registers, text.data() + (leaf - 0x80000002) * sizeof registers, sizeof registers);
        } else {
            // Whatever the highest leaf: an old processor answers a leaf it does not have with data of another.
            registers.eax = (machine.cores - 1) << 26 | 0x03FFFFFF;
        }
        return true;
    }

    std::uint8_t LocalApicIdentifier() override { return machine.processors[running].identifier; }

    int ProcessorCount() override { return static_cast<int>(machine.processors.size() + machine.outOfBounds.size()); }

    bool ReadAffinity(processor::ProcessorSet& processSet, processor::ProcessorSet& systemSet) override {
        ++affinityReads;
        processSet = systemSet = machine.affinityReadable ? affinity : processor::ProcessorSet();
        for (std::size_t number : machine.outOfBounds) {
            systemSet.set(number);
        }
        return machine.affinityReadable;
    }

    bool SetAffinity(const processor::ProcessorSet& processors) override {
        ++affinityCalls;
        const bool alone = processors.count() == 1;
        for (const LogicalProcessor& processor : machine.processors) {
            if (alone && processors[processor.number] && !processor.reachable) {
                return false;
            }
        }
        affinity = processors;
        return true;
    }

    void Yield() override {
        while (!affinity[machine.processors[running].number]) {
            running = (running + 1) % machine.processors.size();
        }
    }

    std::uint64_t CounterFrequency() override { return machine.frequency; }

    std::uint64_t Counter() override {
        const std::uint64_t ticks = machine.ticksPerRead[counterReads % machine.ticksPerRead.size()];
        counter += ticks;
        const std::size_t pass = counterReads++ / kReadsAPass;
        timeStamp += machine.cyclesPerRead[std::min(pass, machine.cyclesPerRead.size() - 1)];
        return counter;
    }

    std::uint64_t TimeStamp() override { return timeStamp; }

    int ThreadPriority() override { return machine.priority; }

    void SetThreadPriority(int priority) override { priorities.push_back(priority); }

    /// Where each reading takes 10 ticks: the first of a pass, 5 up to its start and 100 up to its end.
    static constexpr std::size_t kReadsAPass = 106;

    const MachineDescription machine;
    processor::ProcessorSet process;
    processor::ProcessorSet affinity;
    std::size_t running = 0;
    int affinityReads = 0;
    int affinityCalls = 0;
    std::size_t counterReads = 0;
    std::uint64_t counter = 0;
    std::uint64_t timeStamp = machine.firstTimeStamp;
    std::vector<int> priorities; // set so far
};
