#include "processor/ProcessorCensus.h"

#include "processor/MachineOfThePast.h"

#include <array>
#include <gtest/gtest.h>

namespace {

using processor::CensusResults;
using enum processor::HyperThreadingStatus;

constexpr std::uint32_t kTimeStampCounter = 1U << 4;
constexpr std::uint32_t kMmx = 1U << 23;
constexpr std::uint32_t kSse = 1U << 25;
constexpr std::uint32_t kSsE2 = 1U << 26;
constexpr std::uint32_t kHyperThreading = 1U << 28;
constexpr std::uint32_t kFlags3DNow = 1U << 31 | 1U << 30;
constexpr std::uint32_t kLeaf0 = 0x80000000; // of the extended ones

/// MMX, SSE, SSE2; SSE3, MONITOR; 3DNow, its extensions.
std::string FlagsOf(const CensusResults& results) {
    std::string flags;
    for (const std::uint32_t flag : {results.hasMMX, results.hasSSE, results.hasSSE2, results.hasSSE3,
                                     results.hasMonitor, results.has3DNow, results.has3DNowExtensions}) {
        flags += std::to_string(flag);
    }
    return flags;
}

/// Family, model, stepping, type.
using Numbers = std::array<std::uint32_t, 4>;

Numbers NumbersOf(const CensusResults& results) {
    return {results.family, results.model, results.stepping, results.type};
}

TEST(ProcessorCensus, ReadsFlagsAndNumbers) {
    const struct {
        const char* name;
        const char* vendor;
        std::uint32_t signature, features, instructions, highestExtendedLeaf, extendedFeatures;
        const char* flags;
        Numbers numbers;
    } rows[] = {
        {"all set", "AuthenticAMD", 0x500, ~0U, ~0U, kLeaf0 + 1, ~0U, "1110011", {5, 0, 0, 0}},
        {"all on Intel", "GenuineIntel", 0x500, ~kHyperThreading, ~0U, kLeaf0 + 1, ~0U, "1111100", {5, 0, 0, 0}},
        {"all else",
         "VendorUnseen",
         0x500,
         ~(kMmx | kSse | kSsE2),
         0,
         kLeaf0 + 1,
         ~kFlags3DNow,
         "0000000",
         {5, 0, 0, 0}},
        {"all else on Intel", "GenuineIntel", 0x500, kMmx, ~9U, 0, 0, "1000000", {5, 0, 0, 0}},
        {"MMX", "CyrixInstead", 0x500, kMmx, 0, 0, 0, "1000000", {5, 0, 0, 0}},
        {"SSE", "CentaurHauls", 0x500, kSse, 0, 0, 0, "0100000", {5, 0, 0, 0}},
        {"SSE2", "AuthenticAMD", 0xF00, kSsE2, 0, 0, 0, "0010000", {15, 0, 0, 0}},
        {"SSE3", "GenuineIntel", 0x500, 0, 1, 0, 0, "0001000", {5, 0, 0, 0}},
        {"MONITOR", "GenuineIntel", 0x500, 0, 8, 0, 0, "0000100", {5, 0, 0, 0}},
        {"3DNow", "GenuineTMx86", 0x500, 0, 0, ~0U, 1U << 31, "0000010", {5, 0, 0, 0}},
        {"extensions of 3DNow", "VendorUnseen", 0x500, 0, 0, ~0U, 1U << 30, "0000001", {5, 0, 0, 0}},
        {"3DNow needs family 5", "AuthenticAMD", 0x0FF00400, 0, 0, ~0U, ~0U, "0000000", {4, 0, 0, 0}},
        {"3DNow needs its leaf", "AuthenticAMD", 0x500, 0, 0, kLeaf0, ~0U, "0000000", {5, 0, 0, 0}},
        {"extended numbers on Intel", "GenuineIntel", ~0U, 0, 0, 0, 0, "0000000", {270, 255, 15, 3}},
        {"and their places", "GenuineIntel", 0xF12A3654 & ~0xC000U, 0, 0, 0, 0, "0000000", {6 + 0x12, 0xA5, 4, 3}},
        {"none elsewhere", "AuthenticAMD", 0xFFFFF654, 0, 0, 0, 0, "0000000", {6, 5, 4, 0}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        MachineOfThePast machine({.vendor = row.vendor,
                                  .signature = row.signature,
                                  .features = row.features,
                                  .instructions = row.instructions,
                                  .highestExtendedLeaf = row.highestExtendedLeaf,
                                  .extendedFeatures = row.extendedFeatures});
        CensusResults results;
        EXPECT_EQ(ProcessorCensus(machine, results), 0);
        EXPECT_EQ(FlagsOf(results), row.flags);
        EXPECT_EQ(NumbersOf(results), row.numbers);
        EXPECT_STREQ(results.vendor, row.vendor);
    }
}

TEST(ProcessorCensus, ChoosesTheMeasurementByTheTimeStampCounter) {
    const struct {
        std::uint32_t signature, features, megahertz;
    } rows[] = {
        {0x500, kTimeStampCounter, 1000},       // measured
        {0x500, ~kTimeStampCounter, 4000 * 43}, // by the family
        {0x1500500, 0, 4000},                   // by the family with the extension, 26
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
    using processor::HyperThreadingTexts;
    EXPECT_STREQ(HyperThreadingTexts[NotCapable], "HyperThreading technology not capable");
    EXPECT_STREQ(HyperThreadingTexts[Enabled], "HyperThreading technology enabled");
    EXPECT_STREQ(HyperThreadingTexts[Disabled], "HyperThreading technology disabled");
    EXPECT_STREQ(HyperThreadingTexts[CapableNotEnabled], "HyperThreading technology capable but not enabled");
    EXPECT_STREQ(HyperThreadingTexts[CannotBeDetected], "HyperThreading technology cannot be detected");
}

TEST(ProcessorCensus, FindsNothingWithoutCPUID) {
    MachineOfThePast machine({.vendor = nullptr, .features = ~0U});
    CensusResults results;
    EXPECT_EQ(ProcessorCensus(machine, results), -1);
    EXPECT_EQ(FlagsOf(results), "0000000");
    EXPECT_EQ(NumbersOf(results), Numbers());
    EXPECT_STREQ(results.vendor, "------------");
    EXPECT_STREQ(results.name, "");
    EXPECT_EQ(results.megahertz, 0U);
    EXPECT_EQ(machine.counterReads, 0U);
}

} // namespace
