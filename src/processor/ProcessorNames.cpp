#include "processor/ProcessorNames.h"

#include "processor/CpuidFields.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

namespace processor {
namespace {

/// Values from `first` to `last`, both included; any value by default.
struct Range {
    std::uint32_t first = 0;
    std::uint32_t last = ~0U;

    bool Holds(std::uint32_t value) const { return first <= value && value <= last; }
};

constexpr Range Just(std::uint32_t value) {
    return {value, value};
}

constexpr Range UpTo(std::uint32_t value) {
    return {0, value};
}

/// What a row goes by beside family and model.
enum class Trait { None, Stepping, BrandIndex, CacheValue, BrandStringLength };

constexpr const char* kBrandString = nullptr;

/// One name; of the rows of a vendor the first that fits is taken.
struct NameRow {
    Range families;
    Range models;
    Trait trait;
    Range values;
    const char* name; ///< %d stands for the family; `kBrandString` for the processor's own text
};

constexpr Range kAny;
using enum Trait;

constexpr NameRow kIntelNames[] = {
    {kAny, kAny, BrandStringLength, {1, 48}, kBrandString},
    {UpTo(4), kAny, None, kAny, "Intel %d86 Processor"},
    {Just(5), kAny, None, kAny, "Intel Pentium"},
    {Just(6), Just(5), CacheValue, Just(0), "Intel Celeron"},
    {Just(6), Just(5), CacheValue, UpTo(999), "Intel Pentium II"},
    {Just(6), Just(5), None, kAny, "Intel Pentium II Xeon"},
    {Just(6), Just(6), None, kAny, "Intel Celeron"},
    {Just(6), Just(7), CacheValue, UpTo(999), "Intel Pentium III"},
    {Just(6), Just(7), None, kAny, "Intel Pentium III Xeon"},
    {Just(6), Just(8), BrandIndex, Just(1), "Intel Celeron"},
    {Just(6), Just(8), BrandIndex, Just(2), "Intel Pentium III"},
    {Just(6), Just(8), BrandIndex, Just(3), "Intel Pentium III Xeon"},
    {Just(6), Just(8), BrandIndex, Just(8), "Intel Pentium 4"},
    {Just(6), Just(8), None, kAny, "Intel Processor"},
    {Just(6), kAny, None, kAny, ""},
    {Just(15), kAny, BrandIndex, UpTo(7), "Intel Processor"},
    {Just(15), kAny, None, kAny, "Intel Pentium 4"},
    {kAny, kAny, None, kAny, "Intel Processor"},
};

constexpr NameRow kAmdNames[] = {
    {UpTo(4), kAny, None, kAny, "AMD 80%d86 Processor"},
    {Just(5), UpTo(3), None, kAny, "AMD K5"},
    {Just(5), {6, 7}, None, kAny, "AMD K6"},
    {Just(5), Just(8), None, kAny, "AMD K6-2"},
    {Just(5), Just(9), None, kAny, "AMD K6-III"},
    {Just(5), kAny, None, kAny, "AMD Processor"},
    {kAny, kAny, None, kAny, kBrandString},
};

constexpr NameRow kCentaurNames[] = {
    {UpTo(4), kAny, None, kAny, "WinChip 80%d86 Processor"},
    {Just(5), kAny, None, kAny, "IDT WinChip Processor"},
    {Just(6), UpTo(5), None, kAny, "IDT WinChip Processor"},
    {Just(6), Just(6), None, kAny, "VIA C3 Samuel"},
    {Just(6), Just(7), Stepping, UpTo(7), "VIA C3 Samuel 2"},
    {Just(6), Just(7), None, kAny, "VIA C3 Ezra"},
    {kAny, kAny, None, kAny, kBrandString},
};

constexpr NameRow kCyrixNames[] = {
    {UpTo(4), kAny, None, kAny, "Cyrix 80%d86 Processor"},
    {Just(5), kAny, None, kAny, "Cyrix MI"},
    {Just(6), kAny, None, kAny, "Cyrix MII"},
    {kAny, kAny, None, kAny, kBrandString},
};

constexpr NameRow kTransmetaNames[] = {
    {UpTo(4), kAny, None, kAny, "Transmeta 80%d86 Processor"},
    {Just(5), kAny, None, kAny, "Transmeta Crusoe"},
    {kAny, kAny, None, kAny, kBrandString},
};

constexpr struct {
    std::string_view vendor;
    std::span<const NameRow> names;
} kVendors[] = {
    {"GenuineIntel", kIntelNames}, {"AuthenticAMD", kAmdNames},       {"CentaurHauls", kCentaurNames},
    {"CyrixInstead", kCyrixNames}, {"GenuineTMx86", kTransmetaNames},
};

/// What the cache descriptors of leaf 2 count for: the second-level cache in KiB, with thousands for 1024s. Given, gaps
/// included; any other descriptor counts 1.
constexpr struct {
    std::uint32_t descriptor;
    std::uint32_t value;
} kCacheValues[] = {{64, 0},    {68, 1000},  {69, 2000}, {121, 128},  {122, 256},
                    {123, 512}, {124, 1000}, {130, 256}, {132, 1000}, {133, 2000}};

std::uint32_t ReadCacheValue(ProcessorPort& port) {
    CpuidRegisters leaf2;
    port.ReadCpuid(2, 0, leaf2);
    // Required: each of the descriptors sets the value anew, so that the last one, in the highest byte, alone decides;
    // ProcessorNamesTest pins it.
    const std::uint32_t last = Field(leaf2.edx, 24, 8);
    const auto* const row = std::ranges::find(kCacheValues, last, [](const auto& entry) { return entry.descriptor; });
    return row == std::end(kCacheValues) ? 1 : row->value;
}

void StoreBrandString(ProcessorPort& port, char (&name)[49]) {
    for (std::uint32_t part = 0; part < 3; ++part) {
        CpuidRegisters registers;
        port.ReadCpuid(0x80000002 + part, 0, registers);
        const std::uint32_t text[4] = {registers.eax, registers.ebx, registers.ecx, registers.edx};
        std::memcpy(name + part * sizeof text, text, sizeof text);
    }
    name[48] = '\0';
}

/// Returns 0 where the processor has no brand string.
std::uint32_t ReadBrandStringLength(ProcessorPort& port) {
    if (HighestExtendedLeaf(port) <= 0x80000000) {
        return 0;
    }
    char text[49];
    StoreBrandString(port, text);
    return static_cast<std::uint32_t>(std::strlen(text));
}

std::uint32_t ReadTrait(ProcessorPort& port, const NameTraits& traits, Trait trait) {
    switch (trait) {
    case Stepping:
        return traits.stepping;
    case BrandIndex:
        return traits.brandIndex;
    case CacheValue:
        return ReadCacheValue(port);
    case BrandStringLength:
        return ReadBrandStringLength(port);
    case None:
        break;
    }
    return 0;
}

} // namespace

void StoreName(ProcessorPort& port, const NameTraits& traits, char (&name)[49]) {
    for (const auto& [vendor, names] : kVendors) {
        if (vendor != traits.vendor) {
            continue;
        }
        // The last row of each vendor fits all processors.
        const auto row = std::ranges::find_if(names, [&](const NameRow& candidate) {
            return candidate.families.Holds(traits.family) && candidate.models.Holds(traits.model) &&
                   candidate.values.Holds(ReadTrait(port, traits, candidate.trait));
        });
        if (row->name == kBrandString) {
            StoreBrandString(port, name);
        } else {
            std::snprintf(name, sizeof name, row->name, static_cast<int>(traits.family));
        }
        return;
    }
    std::snprintf(name, sizeof name, "%s 80%d86 Processor", traits.vendor, static_cast<int>(traits.family));
}

void CleanName(char (&name)[49]) {
    std::string text = name;
    text.erase(0, text.find_first_not_of(' '));
    for (const char* unit : {"MHz", "GHz"}) {
        const std::size_t found = text.find(unit);
        if (found == std::string::npos) {
            continue;
        }
        std::string_view kept = std::string_view(text).substr(0, found);
        for (const char* dropped : {" ", "0123456789.", " "}) {
            kept = kept.substr(0, kept.find_last_not_of(dropped) + 1);
        }
        text.resize(kept.size());
    }
    name[text.copy(name, sizeof name - 1)] = '\0';
}

} // namespace processor
