#include "processor/ProcessorNames.h"
#include "processor/ProcessorCensus.h"

#include "processor/MachineOfThePast.h"

#include <cstdio>
#include <gtest/gtest.h>

namespace {

constexpr std::uint32_t kAny = 0xFF;               // brand index
constexpr std::uint32_t kNone = 0;                 // cache descriptor
constexpr const char* kBrand = "Brand 486 of 500"; // holds numbers and no unit

struct Identity {
    std::uint32_t family; // with the extended family; see Signature
    std::uint32_t model;
    std::uint32_t cacheDescriptor = kNone, brandIndex = kAny, stepping = 0;
};

struct NamedProcessors {
    const char* vendor;
    const char* name;
    std::vector<Identity> identities;
};

// What is beyond the fields of four bits goes into the extended ones.
std::uint32_t Signature(std::uint32_t family, std::uint32_t model, std::uint32_t stepping) {
    const std::uint32_t base = family > 15 ? 15 : family;
    return (family - base) << 20 | (model >> 4) << 16 | base << 8 | (model & 15) << 4 | stepping;
}

// Of "GenuineIntel" model 0x15 is 5 but for the extended model, and family 16 is 15 but for the extended family; the
// extended model counts on it alone.
const NamedProcessors kNames[] = {
    {"GenuineIntel", "Intel Pentium II", {{6, 5, 67}, {6, 5, 121}, {6, 5, 122}, {6, 5, 123}, {6, 5, 130}}},
    {"GenuineIntel", "Intel Pentium II Xeon", {{6, 5, 68}, {6, 5, 69}, {6, 5, 124}, {6, 5, 132}, {6, 5, 133}}},
    {"GenuineIntel", "Intel 486 Processor", {{4, 8}}},
    {"GenuineIntel", "Intel 086 Processor", {{0, 0}}},
    {"GenuineIntel", "Intel Pentium", {{5, 2}}},
    {"GenuineIntel", "Intel Celeron", {{6, 5, 64}, {6, 6, 68}, {6, 8, kNone, 1}}},
    {"GenuineIntel", "Intel Pentium III", {{6, 7, 64}, {6, 7, 130}, {6, 8, kNone, 2}}},
    {"GenuineIntel", "Intel Pentium III Xeon", {{6, 7, 133}, {6, 8, kNone, 3}}},
    {"GenuineIntel",
     "Intel Processor",
     {{6, 8, kNone, 0}, {6, 8, kNone, 4}, {6, 8, kNone, 9}, {15, 2, kNone, 7}, {16, 2, kNone, 8}, {7, 2, kNone, 8}}},
    {"GenuineIntel", "Intel Pentium 4", {{6, 8, kNone, 8}, {15, 2, kNone, 8}}},
    {"GenuineIntel", "", {{6, 1}, {6, 9}, {6, 0x15}}},
    {"AuthenticAMD", "AMD 80486 Processor", {{4, 3}}},
    {"AuthenticAMD", "AMD K5", {{5, 0}, {5, 3}}},
    {"AuthenticAMD", "AMD Processor", {{5, 4}, {5, 10}}},
    {"AuthenticAMD", "AMD K6", {{5, 6}, {5, 7}}},
    {"AuthenticAMD", "AMD K6-2", {{5, 8}, {5, 0x18}}},
    {"AuthenticAMD", "AMD K6-III", {{5, 9}}},
    {"AuthenticAMD", kBrand, {{6, 1}, {23, 1}}},
    {"CentaurHauls", "WinChip 80486 Processor", {{4, 1}}},
    {"CentaurHauls", "IDT WinChip Processor", {{5, 9}, {6, 5}}},
    {"CentaurHauls", "VIA C3 Samuel", {{6, 6}}},
    {"CentaurHauls", "VIA C3 Samuel 2", {{6, 7, kNone, kAny, 7}}},
    {"CentaurHauls", "VIA C3 Ezra", {{6, 7, kNone, kAny, 8}}},
    {"CentaurHauls", kBrand, {{6, 8}, {7, 6}}},
    {"CyrixInstead", "Cyrix 80486 Processor", {{4, 9}}},
    {"CyrixInstead", "Cyrix MI", {{5, 2}}},
    {"CyrixInstead", "Cyrix MII", {{6, 0}}},
    {"CyrixInstead", kBrand, {{7, 0}}},
    {"GenuineTMx86", "Transmeta 80486 Processor", {{4, 1}}},
    {"GenuineTMx86", "Transmeta Crusoe", {{5, 4}}},
    {"GenuineTMx86", kBrand, {{15, 2}}},
    {"NexGenDriven", "NexGenDriven 80586 Processor", {{5, 0}}},
    {"AuthenticAM ", "AuthenticAM  801586 Processor", {{15, 1}}},
};

// The highest extended leaf admits no brand string, which "GenuineIntel" alone looks at.
TEST(ProcessorNames, GoByVendorFamilyAndModel) {
    for (const auto& [vendor, name, identities] : kNames) {
        for (const Identity& row : identities) {
            SCOPED_TRACE(testing::Message() << vendor << ' ' << row.family << '/' << row.model << ' ' << name);
            MachineOfThePast machine({.vendor = vendor,
                                      .signature = Signature(row.family, row.model, row.stepping),
                                      .brandIndex = row.brandIndex,
                                      .cacheDescriptor = row.cacheDescriptor,
                                      .highestExtendedLeaf = 0x80000000,
                                      .brandString = kBrand});
            processor::CensusResults results;
            EXPECT_EQ(ProcessorCensus(machine, results), 0);
            EXPECT_STREQ(results.name, name);
            EXPECT_STREQ(results.vendor, vendor);
        }
    }
}

TEST(ProcessorNames, BrandStringComesFirstOnGenuineIntelWhereThereIsOne) {
    const struct {
        std::uint32_t highestExtendedLeaf;
        const char* brandString;
        const char* name;
    } rows[] = {
        {0x80000001, "Genuine Brand", "Genuine Brand"},
        {0x80000004, "                      48 characters, all of them", "48 characters, all of them"},
        {0x80000004, "", "Intel Pentium"},
        {0x80000004, " ", ""},
        {0x80000000, "Genuine Brand", "Intel Pentium"},
        {0x03020101, "Genuine Brand", "Intel Pentium"}, // the answer of a processor without extended leaves
        {0xFFFFFFFF, "Genuine Brand", "Genuine Brand"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << std::hex << row.highestExtendedLeaf << " \"" << row.brandString << '"');
        MachineOfThePast machine({.signature = Signature(5, 2, 0),
                                  .highestExtendedLeaf = row.highestExtendedLeaf,
                                  .brandString = row.brandString});
        processor::CensusResults results;
        EXPECT_EQ(ProcessorCensus(machine, results), 0);
        EXPECT_STREQ(results.name, row.name);
    }
}

TEST(ProcessorNames, CleaningTakesAwayBlanksInFrontAndTheClock) {
    const struct {
        const char* text;
        const char* cleaned;
    } rows[] = {
        {"", ""},
        {"   ", ""},
        {"  Two  blanks  ", "Two  blanks  "},
        {"              Intel(R) Pentium(R) 4 CPU 1.80GHz", "Intel(R) Pentium(R) 4 CPU"},
        {"Intel(R) Core(TM) i7 CPU 950 @ 3.07GHz", "Intel(R) Core(TM) i7 CPU 950 @"},
        {"Pentium III 1000MHz Coppermine", "Pentium III"},
        {"Athlon   800 MHz", "Athlon"},
        {"Efficeon(tm) TM-8600-1.1GHz", "Efficeon(tm) TM-8600-"},
        {"1.80GHz", ""},
        {"  GHz", ""},
        {"Duron MHz", "Duron"},
        {"Crusoe 1GHz 133MHz bus", "Crusoe"},
        {"Crusoe 133MHz bus 1GHz", "Crusoe"},
        {"800mhz 1 Ghz 40Hz", "800mhz 1 Ghz 40Hz"},
        {"48 characters without a frequency in any place..", "48 characters without a frequency in any place.."},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        char name[49];
        std::snprintf(name, sizeof name, "%s", row.text);
        processor::CleanName(name);
        EXPECT_STREQ(name, row.cleaned);
    }
}

} // namespace
