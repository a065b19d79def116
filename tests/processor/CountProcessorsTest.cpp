#include "processor/ProcessorCensus.h"

#include "processor/MachineOfThePast.h"

#include <array>
#include <gtest/gtest.h>

namespace {

using enum processor::HyperThreadingStatus;

constexpr std::size_t kLast = processor::kMaxProcessors - 1;

constexpr std::uint32_t kCore2 = 0x000006F6;        // family 6
constexpr std::uint32_t kLaterFamily = 0x00300F10;  // family 15 + 3
constexpr std::uint32_t kOnlyExtended = 0x00100670; // family field 6, extended family 1: exists nowhere, fits by rule

using Counts = std::array<int, 3>; // packages, cores a package, threads a core

struct Row {
    const char* name;
    MachineDescription machine;
    Counts counts;
    processor::HyperThreadingStatus status;
};

const Row kRows[] = {
    // Hyper-threading possible and the process free: the walk over the processors decides.
    {"family 15, two cores of one thread", {.cores = 2}, {1, 2, 1}, Enabled},
    {"two packages of two threads", {.processors = {{0, 0}, {1, 1}, {2, 6}, {3, 7}}}, {2, 1, 2}, Enabled},
    {"even identifiers alone", {.processors = {{0, 0}, {1, 2}, {2, 4}, {3, 6}}}, {4, 1, 2}, CapableNotEnabled},
    {"second sibling on the last processor", {.processors = {{0, 0}, {1, 2}, {2, 4}, {3, 255}}}, {2, 1, 2}, Enabled},
    {"family after 15", {.signature = kLaterFamily}, {1, 1, 2}, Enabled},
    {"extended family alone", {.signature = kOnlyExtended}, {1, 1, 2}, Enabled},
    {"one processor, two siblings", {.processors = {{0, 0}}}, {1, 1, 2}, CapableNotEnabled},
    {"the one sibling cannot be visited", {.processors = {{0, 1, false}, {1, 0}}}, {2, 1, 2}, CapableNotEnabled},
    {"none can be visited", {.processors = {{0, 1, false}, {1, 1, false}}}, {2, 1, 2}, CapableNotEnabled},
    {"gaps and numbers beyond 64", {.processors = {{3, 0}, {31, 2}, {64, 4}, {kLast, 5}}}, {2, 1, 2}, Enabled},

    // Siblings against the bits of the identifier, and the divisions that drop their remainder.
    {"3 siblings take 2 bits", {.siblings = 3, .processors = {{0, 4}, {1, 8}}}, {2, 1, 3}, CapableNotEnabled},
    {"3 siblings take 2 bits, 2 is not", {.siblings = 3, .processors = {{0, 0}, {1, 2}}}, {0, 1, 3}, Enabled},
    {"6 siblings, 4 cores", {.siblings = 6, .cores = 4, .processors = {{0, 0}, {1, 4}}}, {0, 4, 1}, Enabled},
    {"3 processors, 2 siblings", {.processors = {{0, 0}, {1, 1}, {2, 2}}}, {1, 1, 2}, Enabled},
    {"128 siblings", {.siblings = 128, .cores = 64, .processors = {{0, 0}, {1, 128}}}, {2, 64, 2}, CapableNotEnabled},
    {"129 siblings", {.siblings = 129, .cores = 64, .processors = {{0, 0}, {1, 128}}}, {0, 64, 2}, Enabled},
    {"255 siblings, identifier 0 alone", {.siblings = 255, .processors = {{0, 0}}}, {1, 1, 255}, CapableNotEnabled},

    // Possible, but nothing to visit.
    {"one sibling", {.siblings = 1}, {2, 1, 1}, Disabled},
    {"no siblings told", {.siblings = 0, .cores = 2}, {2, 2, 0}, NotCapable},
    {"confined process", {.outOfBounds = {2, 3}}, {-1, 1, 0}, CannotBeDetected},
    {"confined, two cores", {.siblings = 1, .cores = 2, .outOfBounds = {70}}, {-1, 2, 0}, CannotBeDetected},
    {"affinity cannot be read", {.affinityReadable = false}, {-1, 1, 0}, CannotBeDetected},

    // Not possible: one sibling, and packages are what the system counts.
    {"family 6, two cores", {.signature = kCore2, .cores = 2}, {2, 2, 0}, NotCapable},
    {"family 6, one core, confined", {.signature = kCore2, .outOfBounds = {2}}, {3, 1, 1}, NotCapable},
    {"family 6, 64 cores", {.signature = kCore2, .cores = 64}, {2, 64, 0}, NotCapable},
    {"bit 28 clear", {.features = ~(1U << 28), .cores = 2}, {2, 2, 0}, NotCapable},
    {"another vendor, whatever leaf 4 says", {.vendor = "AuthenticAMD", .cores = 2}, {2, 1, 1}, NotCapable},
    {"vendor differs in the last letter", {.vendor = "GenuineInteL", .cores = 2}, {2, 1, 1}, NotCapable},
    {"no CPUID", {.vendor = nullptr}, {2, 1, 1}, NotCapable},

    // The cores stand in leaf 4, which needs to exist.
    {"highest leaf 3", {.highestLeaf = 3, .cores = 2}, {1, 1, 2}, Enabled},
    {"highest leaf 4", {.highestLeaf = 4, .cores = 2}, {1, 2, 1}, Enabled},
};

TEST(CountProcessors, CountsEachMachineAndLeavesItsAffinityAsItWas) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        MachineOfThePast machine(row.machine);
        Counts counts = {99, 99, 99};
        EXPECT_EQ(CountProcessors(machine, counts[0], counts[1], counts[2]), row.status);
        EXPECT_EQ(counts, row.counts);
        EXPECT_EQ(machine.affinityCalls > 0, row.status == Enabled || row.status == CapableNotEnabled);
        // Where hyper-threading is not possible the masks are not even looked at.
        EXPECT_EQ(machine.affinityReads, row.status == NotCapable ? 0 : 1);
        processor::CensusResults results;
        ProcessorCensus(machine, results);
        EXPECT_EQ(results.status, row.status);
        EXPECT_EQ(machine.affinity, machine.process);
    }
}

} // namespace
