#include "processor/ProcessorCensus.h"

#include "processor/MachineOfThePast.h"

#include <array>
#include <gtest/gtest.h>

namespace {

using processor::CensusResults;
using enum processor::HyperThreadingStatus;

constexpr std::uint32_t TimeStampCounter = 1U << 4;
constexpr std::uint32_t MMX = 1U << 23;
constexpr std::uint32_t SSE = 1U << 25;
constexpr std::uint32_t SSE2 = 1U << 26;
constexpr std::uint32_t HyperThreading = 1U << 28;
constexpr std::uint32_t SSE3AndMonitor = 1U << 0 | 1U << 3;
constexpr std::uint32_t Both3DNow = 1U << 31 | 1U << 30;

/// MMX, SSE, SSE2; SSE3, MONITOR; 3DNow, its extensions.
using Flags = std::array<std::uint32_t, 7>;
/// Family, model, stepping, type.
using Numbers = std::array<std::uint32_t, 4>;

Flags FlagsOf(const CensusResults& results) {
    return {results.hasMMX,     results.hasSSE,   results.hasSSE2,           results.hasSSE3,
            results.hasMonitor, results.has3DNow, results.has3DNowExtensions};
}

Numbers NumbersOf(const CensusResults& results) {
    return {results.family, results.model, results.stepping, results.type};
}

TEST(ProcessorCensus, ReadsFlagsAndNumbers) {
    const struct {
        const char* name;
        MachineDescription machine;
        Flags flags;
        Numbers numbers;
    } rows[] = {
        {"all set",
         {.vendor = "AuthenticAMD",
          .signature = 0x00000500,
          .features = ~0U,
          .instructions = ~0U,
          .highestExtendedLeaf = 0x80000001,
          .extendedFeatures = ~0U},
         {1, 1, 1, 0, 0, 1, 1},
         {5, 0, 0, 0}},
        {"all set, another vendor",
         {.vendor = "GenuineIntel",
          .signature = 0x00000500,
          .features = ~HyperThreading,
          .instructions = ~0U,
          .highestExtendedLeaf = 0x80000001,
          .extendedFeatures = ~0U},
         {1, 1, 1, 1, 1, 0, 0},
         {5, 0, 0, 0}},
        {"all but the flags set",
         {.vendor = "VendorUnseen",
          .signature = 0x00000500,
          .features = ~(MMX | SSE | SSE2),
          .highestExtendedLeaf = 0x80000001,
          .extendedFeatures = ~Both3DNow},
         {0, 0, 0, 0, 0, 0, 0},
         {5, 0, 0, 0}},
        {"Intel without SSE3 and MONITOR",
         {.signature = 0x00000500, .features = MMX, .instructions = ~SSE3AndMonitor},
         {1, 0, 0, 0, 0, 0, 0},
         {5, 0, 0, 0}},
        {"MMX", {.vendor = "CyrixInstead", .signature = 0x500, .features = MMX}, {1, 0, 0, 0, 0, 0, 0}, {5, 0, 0, 0}},
        {"SSE", {.vendor = "CentaurHauls", .signature = 0x500, .features = SSE}, {0, 1, 0, 0, 0, 0, 0}, {5, 0, 0, 0}},
        {"SSE2",
         {.vendor = "AuthenticAMD", .signature = 0xF00, .features = SSE2},
         {0, 0, 1, 0, 0, 0, 0},
         {15, 0, 0, 0}},
        {"SSE3", {.signature = 0x500, .instructions = 1U << 0}, {0, 0, 0, 1, 0, 0, 0}, {5, 0, 0, 0}},
        {"MONITOR", {.signature = 0x500, .instructions = 1U << 3}, {0, 0, 0, 0, 1, 0, 0}, {5, 0, 0, 0}},
        {"3DNow",
         {.vendor = "GenuineTMx86", .signature = 0x500, .highestExtendedLeaf = ~0U, .extendedFeatures = 1U << 31},
         {0, 0, 0, 0, 0, 1, 0},
         {5, 0, 0, 0}},
        {"extensions of 3DNow",
         {.vendor = "VendorUnseen", .signature = 0x500, .highestExtendedLeaf = ~0U, .extendedFeatures = 1U << 30},
         {0, 0, 0, 0, 0, 0, 1},
         {5, 0, 0, 0}},
        {"3DNow needs a family above 4",
         {.vendor = "AuthenticAMD", .signature = 0x0FF00400, .highestExtendedLeaf = ~0U, .extendedFeatures = ~0U},
         {0, 0, 0, 0, 0, 0, 0},
         {4, 0, 0, 0}},
        {"3DNow needs its leaf",
         {.vendor = "AuthenticAMD", .signature = 0x500, .highestExtendedLeaf = 0x80000000, .extendedFeatures = ~0U},
         {0, 0, 0, 0, 0, 0, 0},
         {5, 0, 0, 0}},
        {"extended numbers and type on Intel",
         {.signature = 0xFFFFFFFF, .features = 0},
         {0, 0, 0, 0, 0, 0, 0},
         {270, 255, 15, 3}},
        {"and their places",
         {.signature = 0xF12A3654 & ~0xC000U, .features = 0},
         {0, 0, 0, 0, 0, 0, 0},
         {6 + 0x12, 0xA5, 4, 3}},
        {"neither elsewhere", {.vendor = "AuthenticAMD", .signature = 0xFFFFF654}, {0, 0, 0, 0, 0, 0, 0}, {6, 5, 4, 0}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        MachineOfThePast machine(row.machine);
        CensusResults results;
        EXPECT_EQ(ProcessorCensus(machine, results), 0);
        EXPECT_EQ(FlagsOf(results), row.flags);
        EXPECT_EQ(NumbersOf(results), row.numbers);
        EXPECT_STREQ(results.vendor, row.machine.vendor);
    }
}

TEST(ProcessorCensus, ChoosesTheMeasurementByTheTimeStampCounter) {
    const struct {
        std::uint32_t signature;
        std::uint32_t features;
        std::uint32_t megahertz;
    } rows[] = {
        {0x500, TimeStampCounter, 1000},       // measured
        {0x500, ~TimeStampCounter, 4000 * 43}, // by the family
        {0x1500500, 0, 4000},                  // by the family with the extension, 26
        {0x200, 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << std::hex << row.signature << ' ' << row.features);
        MachineOfThePast machine({.signature = row.signature, .features = row.features});
        CensusResults results;
        EXPECT_EQ(ProcessorCensus(machine, results), 0);
        EXPECT_EQ(results.megahertz, row.megahertz);
    }
}

TEST(ProcessorCensus, TellsTheStatusOfHyperThreadingInItsWords) {
    const struct {
        MachineDescription machine;
        std::int32_t status;
        const char* text;
    } rows[] = {
        {{.signature = 0x6F6}, NotCapable, "HyperThreading technology not capable"},
        {{.cores = 2}, Enabled, "HyperThreading technology enabled"},
        {{.siblings = 1}, Disabled, "HyperThreading technology disabled"},
        {{.processors = {{0, 0}, {1, 2}}}, CapableNotEnabled, "HyperThreading technology capable but not enabled"},
        {{.outOfBounds = {2}}, CannotBeDetected, "HyperThreading technology cannot be detected"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        MachineOfThePast machine(row.machine);
        CensusResults results;
        EXPECT_EQ(ProcessorCensus(machine, results), 0);
        EXPECT_EQ(results.status, row.status);
        EXPECT_STREQ(processor::HyperThreadingTexts[results.status], row.text);
        EXPECT_EQ(machine.affinity, machine.process);
    }
}

TEST(ProcessorCensus, FindsNothingWithoutCPUID) {
    MachineOfThePast machine({.vendor = nullptr, .features = ~0U});
    CensusResults results;
    EXPECT_EQ(ProcessorCensus(machine, results), -1);
    EXPECT_EQ(FlagsOf(results), Flags());
    EXPECT_EQ(NumbersOf(results), Numbers());
    EXPECT_STREQ(results.vendor, "------------");
    EXPECT_STREQ(results.name, "");
    EXPECT_EQ(results.megahertz, 0U);
    EXPECT_EQ(machine.counterReads, 0U);
}

} // namespace
