#include "processor/ClockMeasurement.h"

#include "processor/MachineOfThePast.h"

#include <gtest/gtest.h>

namespace {

using Machine = MachineDescription;

constexpr std::uint64_t kAbove32Bits = 0x100000000;

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
        {"time stamp passes 32 bits", {.cyclesPerRead = {1000}, .firstTimeStamp = kAbove32Bits - 50000}, 1000, 3},
        {"pass of more than 32 bits", {.cyclesPerRead = {kAbove32Bits / 100 + 1000}}, 999, 3},
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
        for (const int priority : {0, -15, 15, processor::kUnknownPriority}) {
            SCOPED_TRACE(testing::Message() << row.name << ", priority " << priority);
            Machine described = row.machine;
            described.priority = priority;
            MachineOfThePast machine(described);
            EXPECT_EQ(processor::MeasureTimeStampClock(machine), row.megahertz);
            const bool coarse = row.machine.ticksPerRead[0] > 1000; // one reading each for begin, start and end
            EXPECT_EQ(machine.counterReads, row.passes * (coarse ? 3 : MachineOfThePast::kReadsAPass));
            std::vector<int> expected;
            for (std::size_t pass = 0; pass < row.passes && priority != processor::kUnknownPriority; ++pass) {
                expected.insert(expected.end(), {15, priority});
            }
            EXPECT_EQ(machine.priorities, expected);
        }
    }
}

TEST(ClockMeasurement, GoesByTheFamilyWithoutATimeStampCounter) {
    // The last of the ten pairs is the shortest, 4 microseconds; what passes between pairs is shorter still. Less than
    // a microsecond counts as nothing, 5 ticks of 1193182 a second as 4.
    std::vector<std::uint64_t> pairs = {1, 90, 1, 90, 1, 90, 1, 90, 1, 90, 1, 90, 1, 90, 1, 90, 1, 90, 1, 40};
    std::vector<std::uint64_t> eleventh = pairs;
    eleventh.back() = 90;
    eleventh.insert(eleventh.end(), {1, 1});
    const struct {
        std::uint32_t family;
        std::vector<std::uint64_t> ticks;
        std::uint32_t megahertz;
        std::uint64_t frequency = 10000000;
    } rows[] = {
        {0, pairs, 0},     {2, pairs, 0},      {3, pairs, 115000},       {4, pairs, 47000},  {5, pairs, 43000},
        {6, pairs, 38000}, {11, pairs, 38000}, {12, pairs, 1000},        {270, pairs, 1000}, {4, eleventh, 20888},
        {4, {9, 9}, 0},    {4, {19}, 188000},  {4, {5}, 47000, 1193182}, {4, {10}, 0, 0},    {4, {10}, 0, 9}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << "family " << row.family << ", MHz " << row.megahertz);
        MachineOfThePast machine({.frequency = row.frequency, .ticksPerRead = row.ticks});
        EXPECT_EQ(processor::EstimateClockByFamily(machine, row.family), row.megahertz);
        EXPECT_TRUE(machine.priorities.empty());
    }
}

} // namespace
