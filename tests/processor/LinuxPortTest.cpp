#include "processor/ProcessorCensus.h"
#include "processor/ProcessorPort.h"

#include <cpuid.h>
#include <cstdint>
#include <gtest/gtest.h>
#include <sched.h>
#include <string_view>

namespace {

using processor::MachinePort;
using processor::ProcessorSet;

TEST(LinuxPort, SendsTheCallerToEachProcessorAndBack) {
    processor::ProcessorPort& port = MachinePort();
    ProcessorSet process, system;
    ASSERT_TRUE(port.ReadAffinity(process, system));
    ASSERT_TRUE(process.any());
    EXPECT_GE(system.count(), static_cast<std::size_t>(port.ProcessorCount()));
    for (std::size_t number = 0; number < process.size(); ++number) {
        if (!process[number]) {
            continue;
        }
        SCOPED_TRACE(number);
        const ProcessorSet alone = ProcessorSet().set(number);
        ASSERT_TRUE(port.SetAffinity(alone));
        port.Yield();
        EXPECT_EQ(sched_getcpu(), static_cast<int>(number));
        ProcessorSet confined, whole;
        EXPECT_TRUE(port.ReadAffinity(confined, whole));
        EXPECT_EQ(confined, alone);
        EXPECT_EQ(whole == alone, port.ProcessorCount() == 1);
        EXPECT_FALSE(port.SetAffinity(ProcessorSet())); // refused, and changes nothing
        EXPECT_TRUE(port.ReadAffinity(confined, whole));
        EXPECT_EQ(confined, alone);
        EXPECT_TRUE(port.SetAffinity(process));
    }
    ProcessorSet after;
    ASSERT_TRUE(port.ReadAffinity(after, system));
    EXPECT_EQ(after, process);
}

TEST(LinuxPort, ClearsTheRegistersOfALeafThatIsNotThere) {
    processor::CpuidRegisters registers;
    ASSERT_TRUE(MachinePort().ReadCpuid(0, 0, registers));
    ASSERT_NE(registers.ebx, 0U);
    EXPECT_FALSE(MachinePort().ReadCpuid(registers.eax + 1, 0, registers));
    EXPECT_EQ(registers.eax | registers.ebx | registers.ecx | registers.edx, 0U);
}

TEST(Census, ResultsOfThisMachineStandAfterLoad) {
    int packages = 99, coresPerPackage = 99, threadsPerCore = 99;
    CountProcessors(packages, coresPerPackage, threadsPerCore);
    EXPECT_EQ(CensusPackages, packages);
    EXPECT_EQ(CensusCoresPerPackage, coresPerPackage);
    EXPECT_EQ(CensusThreadsPerCore, threadsPerCore);
    EXPECT_GE(coresPerPackage, 1);
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    ASSERT_NE(__get_cpuid(1, &eax, &ebx, &ecx, &edx), 0);
    EXPECT_EQ(ProcessorHasMMX(), (edx & bit_MMX) != 0);
    EXPECT_EQ(ProcessorHasSSE(), (edx & bit_SSE) != 0);
    EXPECT_EQ(ProcessorHasSSE2(), (edx & bit_SSE2) != 0);
    EXPECT_NE(std::string_view(ProcessorVendor), "------------");
    EXPECT_EQ(std::string_view(ProcessorVendor).size(), 12U);
    EXPECT_EQ(&ProcessorName, &processor::MachineResults.name);
    EXPECT_GT(ProcessorMHz, 100U); // a frequency misread by a power of ten is outside
    EXPECT_LT(ProcessorMHz, 10000U);
    EXPECT_GE(ProcessorHTStatus, 0);
    EXPECT_LE(ProcessorHTStatus, 4);
}

TEST(LinuxPort, CounterAndTimeStampGoOn) {
    processor::ProcessorPort& port = MachinePort();
    const std::uint64_t counter = port.Counter();
    const std::uint64_t timeStamp = port.TimeStamp();
    const std::uint64_t millisecond = port.CounterFrequency() / 1000;
    while (port.Counter() - counter < millisecond) {
    }
    EXPECT_GT(port.TimeStamp() - timeStamp, 1000U); // a clock of 1 MHz
    EXPECT_EQ(port.ThreadPriority(), processor::kUnknownPriority);
}

} // namespace
