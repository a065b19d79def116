#include "processor/ProcessorNames.h"
#include "processor/ProcessorCensus.h"

#include "processor/MachineOfThePast.h"

#include <cstdio>
#include <gtest/gtest.h>

namespace {

constexpr std::uint32_t AnyBrandIndex = 0xFF;
constexpr std::uint32_t NoDescriptor = 0;
constexpr const char* Brand = "Brand 486 of 500"; // holds numbers and no unit

struct NameCase {
    const char* vendor;
    std::uint32_t family; // with the extended family; see Signature
    std::uint32_t model;
    const char* name;
    std::uint32_t brandIndex = AnyBrandIndex;
    std::uint32_t cacheDescriptor = NoDescriptor;
    std::uint32_t stepping = 0;
};

// What is beyond the fields of four bits goes into the extended ones.
std::uint32_t Signature(std::uint32_t family, std::uint32_t model, std::uint32_t stepping) {
    const std::uint32_t base = family > 15 ? 15 : family;
    return (family - base) << 20 | (model >> 4) << 16 | base << 8 | (model & 15) << 4 | stepping;
}

const NameCase names[] = {
    {"GenuineIntel", 4, 8, "Intel 486 Processor"},
    {"GenuineIntel", 0, 0, "Intel 086 Processor"},
    {"GenuineIntel", 5, 2, "Intel Pentium"},
    {"GenuineIntel", 6, 5, "Intel Celeron", AnyBrandIndex, 64},
    {"GenuineIntel", 6, 5, "Intel Pentium II", AnyBrandIndex, 67},
    {"GenuineIntel", 6, 5, "Intel Pentium II", AnyBrandIndex, 121},
    {"GenuineIntel", 6, 5, "Intel Pentium II", AnyBrandIndex, 122},
    {"GenuineIntel", 6, 5, "Intel Pentium II", AnyBrandIndex, 123},
    {"GenuineIntel", 6, 5, "Intel Pentium II", AnyBrandIndex, 130},
    {"GenuineIntel", 6, 5, "Intel Pentium II Xeon", AnyBrandIndex, 68},
    {"GenuineIntel", 6, 5, "Intel Pentium II Xeon", AnyBrandIndex, 69},
    {"GenuineIntel", 6, 5, "Intel Pentium II Xeon", AnyBrandIndex, 124},
    {"GenuineIntel", 6, 5, "Intel Pentium II Xeon", AnyBrandIndex, 132},
    {"GenuineIntel", 6, 5, "Intel Pentium II Xeon", AnyBrandIndex, 133},
    {"GenuineIntel", 6, 6, "Intel Celeron", AnyBrandIndex, 68},
    {"GenuineIntel", 6, 7, "Intel Pentium III", AnyBrandIndex, 64},
    {"GenuineIntel", 6, 7, "Intel Pentium III", AnyBrandIndex, 130},
    {"GenuineIntel", 6, 7, "Intel Pentium III Xeon", AnyBrandIndex, 133},
    {"GenuineIntel", 6, 8, "Intel Processor", 0},
    {"GenuineIntel", 6, 8, "Intel Celeron", 1},
    {"GenuineIntel", 6, 8, "Intel Pentium III", 2},
    {"GenuineIntel", 6, 8, "Intel Pentium III Xeon", 3},
    {"GenuineIntel", 6, 8, "Intel Processor", 4},
    {"GenuineIntel", 6, 8, "Intel Pentium 4", 8},
    {"GenuineIntel", 6, 8, "Intel Processor", 9},
    {"GenuineIntel", 6, 1, ""},
    {"GenuineIntel", 6, 9, ""},
    {"GenuineIntel", 6, 0x15, ""}, // model 5 but for the extended model
    {"GenuineIntel", 15, 2, "Intel Processor", 7},
    {"GenuineIntel", 15, 2, "Intel Pentium 4", 8},
    {"GenuineIntel", 16, 2, "Intel Processor", 8}, // family 15 but for the extended family
    {"GenuineIntel", 7, 2, "Intel Processor", 8},

    {"AuthenticAMD", 4, 3, "AMD 80486 Processor"},
    {"AuthenticAMD", 5, 0, "AMD K5"},
    {"AuthenticAMD", 5, 3, "AMD K5"},
    {"AuthenticAMD", 5, 4, "AMD Processor"},
    {"AuthenticAMD", 5, 6, "AMD K6"},
    {"AuthenticAMD", 5, 7, "AMD K6"},
    {"AuthenticAMD", 5, 8, "AMD K6-2"},
    {"AuthenticAMD", 5, 9, "AMD K6-III"},
    {"AuthenticAMD", 5, 0x18, "AMD K6-2"}, // the extended model counts on "GenuineIntel" alone
    {"AuthenticAMD", 5, 10, "AMD Processor"},
    {"AuthenticAMD", 6, 1, Brand},
    {"AuthenticAMD", 23, 1, Brand},

    {"CentaurHauls", 4, 1, "WinChip 80486 Processor"},
    {"CentaurHauls", 5, 9, "IDT WinChip Processor"},
    {"CentaurHauls", 6, 5, "IDT WinChip Processor"},
    {"CentaurHauls", 6, 6, "VIA C3 Samuel"},
    {"CentaurHauls", 6, 7, "VIA C3 Samuel 2", AnyBrandIndex, NoDescriptor, 7},
    {"CentaurHauls", 6, 7, "VIA C3 Ezra", AnyBrandIndex, NoDescriptor, 8},
    {"CentaurHauls", 6, 8, Brand},
    {"CentaurHauls", 7, 6, Brand},

    {"CyrixInstead", 4, 9, "Cyrix 80486 Processor"},
    {"CyrixInstead", 5, 2, "Cyrix MI"},
    {"CyrixInstead", 6, 0, "Cyrix MII"},
    {"CyrixInstead", 7, 0, Brand},

    {"GenuineTMx86", 4, 1, "Transmeta 80486 Processor"},
    {"GenuineTMx86", 5, 4, "Transmeta Crusoe"},
    {"GenuineTMx86", 15, 2, Brand},

    {"NexGenDriven", 5, 0, "NexGenDriven 80586 Processor"},
    {"AuthenticAM ", 15, 1, "AuthenticAM  801586 Processor"},
};

// The highest extended leaf admits no brand string, which "GenuineIntel" alone looks at.
TEST(ProcessorNames, GoByVendorFamilyAndModel) {
    for (const NameCase& row : names) {
        SCOPED_TRACE(testing::Message() << row.vendor << ' ' << row.family << '/' << row.model << ' ' << row.name);
        MachineOfThePast machine({.vendor = row.vendor,
                                  .signature = Signature(row.family, row.model, row.stepping),
                                  .brandIndex = row.brandIndex,
                                  .cacheDescriptor = row.cacheDescriptor,
                                  .highestExtendedLeaf = 0x80000000,
                                  .brandString = Brand});
        processor::CensusResults results;
        EXPECT_EQ(ProcessorCensus(machine, results), 0);
        EXPECT_STREQ(results.name, row.name);
        EXPECT_STREQ(results.vendor, row.vendor);
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
