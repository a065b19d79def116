#include "processor/ClockMeasurement.h"

#include "processor/MachineOfThePast.h"

#include <gtest/gtest.h>

namespace {

using Machine = MachineDescription;

constexpr std::uint64_t Above32Bits = 0x100000000;

// A reading takes 10 ticks: at 10 MHz that is a microsecond, so that cycles a reading are MHz.
TEST(ClockMeasurement, StopsOnceThreePassesAgree) {
    const struct {
        const char* name;
        Machine machine;
        std::uint32_t megahertz;
        std::size_t passes;
    } rows[] = {
        {"steady", {.cyclesPerRead = {1000}}, 1000, 3},
        {"rising by 1, just agreeing", {.cyclesPerRead = {1000, 1001, 1002}}, 1001, 3},
        {"rising by 2", {.cyclesPerRead = {1000, 1002, 1004, 1004, 1004}}, 1002, 5},
        {"the newest is off", {.cyclesPerRead = {1000, 1000, 1002, 1002, 1002}}, 1001, 5},
        {"the middle one is off", {.cyclesPerRead = {1000, 1002, 1000, 1000, 1000}}, 1000, 5},
        {"the oldest is off", {.cyclesPerRead = {1002, 1000, 1000, 1000}}, 1000, 4},
        {"never steady", {.cyclesPerRead = {1, 9, 1, 9, 1, 9, 1, 9, 1, 9, 1, 9, 1, 9, 1, 9, 1, 9, 1, 9}}, 5, 20},
        {"time stamp passes 32 bits", {.cyclesPerRead = {1000}, .firstTimeStamp = Above32Bits - 50000}, 1000, 3},
        {"pass of more than 32 bits", {.cyclesPerRead = {Above32Bits / 100 + 1000}}, 999, 3},
        {"time stamp stands still", {.cyclesPerRead = {0}}, 0, 3},
        // 1000 ticks are 1000 * 100000 / 357954 = 279 microseconds, for 279600 cycles; 279.37 would give 1000.
        {"uneven frequency", {.frequency = 3579545, .cyclesPerRead = {2796}}, 1002, 3},
        {"least frequency", {.frequency = 10, .cyclesPerRead = {1000000}}, 1, 3},
        {"frequency cannot be read", {.frequency = 0}, 0, 0},
        {"tenth of the frequency is 0", {.frequency = 9}, 0, 0},
        {"passes shorter than a microsecond", {.frequency = 100000000000}, 0, 3},
        {"reading takes long", {.ticksPerRead = {5000}, .cyclesPerRead = {500000}}, 1000, 3},
    };
    for (const auto& row : rows) {
        for (const int priority : {0, -15, 15, processor::UnknownPriority}) {
            SCOPED_TRACE(testing::Message() << row.name << ", priority " << priority);
            Machine described = row.machine;
            described.priority = priority;
            MachineOfThePast machine(described);
            EXPECT_EQ(processor::MeasureTimeStampClock(machine), row.megahertz);
            const bool coarse = row.machine.ticksPerRead[0] > 1000; // one reading each for begin, start and end
            EXPECT_EQ(machine.counterReads, row.passes * (coarse ? 3 : MachineOfThePast::ReadsAPass));
            std::vector<int> expected;
            for (std::size_t pass = 0; pass < row.passes && priority != processor::UnknownPriority; ++pass) {
                expected.insert(expected.end(), {15, priority});
            }
            EXPECT_EQ(machine.priorities, expected);
        }
    }
}

TEST(ClockMeasurement, GoesByTheFamilyWithoutATimeStampCounter) {
    // The last of the ten pairs is the shortest, 4 microseconds; what passes between pairs is shorter still.
    const std::vector<std::uint64_t> lastPair = {1, 90, 1, 90, 1, 90, 1, 90, 1, 90, 1, 90, 1, 90, 1, 90, 1, 90, 1, 40};
    const std::vector<std::uint64_t> eleventhPair = {1,  90, 1,  90, 1,  90, 1,  90, 1,  90, 1,
                                                     90, 1,  90, 1,  90, 1,  90, 1,  90, 1,  1};
    const struct {
        std::uint32_t family;
        Machine machine;
        std::uint32_t megahertz;
    } rows[] = {
        {0, {.ticksPerRead = lastPair}, 0},
        {2, {.ticksPerRead = lastPair}, 0},
        {3, {.ticksPerRead = lastPair}, 115000},
        {4, {.ticksPerRead = lastPair}, 47000},
        {5, {.ticksPerRead = lastPair}, 43000},
        {6, {.ticksPerRead = lastPair}, 38000},
        {11, {.ticksPerRead = lastPair}, 38000},
        {12, {.ticksPerRead = lastPair}, 1000},
        {270, {.ticksPerRead = lastPair}, 1000},
        {4, {.ticksPerRead = eleventhPair}, 4000 * 47 / 9},
        {4, {.ticksPerRead = {9}}, 0}, // less than a microsecond
        {4, {.ticksPerRead = {19}}, 4000 * 47},
        {4, {.frequency = 1193182, .ticksPerRead = {5}}, 4000 * 47 / 4}, // 4.19 microseconds
        {4, {.frequency = 0}, 0},
        {4, {.frequency = 9}, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << "family " << row.family << ", MHz " << row.megahertz);
        MachineOfThePast machine(row.machine);
        EXPECT_EQ(processor::EstimateClockByFamily(machine, row.family), row.megahertz);
        EXPECT_TRUE(machine.priorities.empty());
    }
}

} // namespace
