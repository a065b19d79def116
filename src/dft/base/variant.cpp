#include "dft/base/variant.h"

#include <cpuid.h>
#include <cstdlib>
#include <cstring>

namespace dft {

std::atomic<std::int32_t> dft_variant_code{-1};

namespace {

constexpr std::size_t kOverrideCharacters = 32; // given; pinned by Dispatch.VariantOfOverride

ProcessorIdentity ThisProcessor() {
    ProcessorIdentity processor = {};
    unsigned int eax = 0, ebx = 0, ecx = 0, edx = 0;
    // On 32-bit processors __get_cpuid first toggles bit 21 of EFLAGS.
    if (__get_cpuid(0, &eax, &ebx, &ecx, &edx) == 0) {
        return processor;
    }
    processor.has_cpuid = true;
    const unsigned int vendor[3] = {ebx, edx, ecx};
    std::memcpy(processor.vendor, vendor, sizeof(processor.vendor));
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) != 0) {
        processor.eax = eax;
        processor.ebx = ebx;
        processor.ecx = ecx;
    }
    return processor;
}

} // namespace

std::int32_t dft_variant_of_override(std::string_view value) {
    char head[kOverrideCharacters + 1] = {};
    value.copy(head, kOverrideCharacters);
    const long code = std::strtol(head, nullptr, 10);
    if (code >= 1 && code <= 3) {
        return static_cast<std::int32_t>(code);
    }
    return std::strcmp(head, "0") == 0 ? 0 : -1;
}

std::int32_t dft_variant_of_processor(const ProcessorIdentity& processor) {
    if (!processor.has_cpuid || std::memcmp(processor.vendor, "GenuineIntel", sizeof(processor.vendor)) != 0) {
        return 0;
    }
    const std::uint32_t family = processor.eax >> 8 & 15;
    if (family == 15) {
        return (processor.ecx & 1) != 0 ? 3 : 2;
    }
    if ((processor.ebx & 0xFF & 0xF8) == 0x10) {
        return 2;
    }
    // Required: the model field alone decides, whatever the family; today's processors come out by their low four bits.
    // Pinned by Dispatch.VariantOfProcessor.
    const std::uint32_t model = processor.eax >> 4 & 15;
    return model < 7 ? 0 : 1;
}

std::int32_t dft_select_variant() {
    std::int32_t code = dft_variant_code.load(std::memory_order_relaxed);
    if (code == -1) {
        const char* const value = std::getenv("CLARIBOX_DFT_VARIANT");
        code = value != nullptr ? dft_variant_of_override(value) : -1;
        if (code == -1) {
            code = dft_variant_of_processor(ThisProcessor());
        }
        // Two first calls at once store the same code.
        dft_variant_code.store(code, std::memory_order_relaxed);
    }
    return code;
}

namespace {

// All given. Limits of blocks decide how passes pair up, so other values change bytes; groups are a matter of caches
// alone. Pinned by Pow2.LengthsFallIntoGroupsAndBlocks and Pow2.CommitTable (the alignment); those of one-shot jobs by
// JobLife.OneShotByVariant, those of threads by Driver.ThreadsOfALineByVariant and Driver.RegionsFromLimitsOfElements.
// Double precision runs by one set of pass limits in all variants.
constexpr DftTuning kDefault = {
    .name = "default",
    .table_alignment = 16,
    .one_shot_below = {1024, 512},
    .one_shot_real_below = {8193, 4097},
    .small_log2_below = {11, 11},
    .two_level_up_to = {16384, 8192},
    .two_level_block = {1024, 1024},
    .group = {16384, 8192},
    .group_block = {1024, 512},
    .scale_last_forward = false,
    .serial_rank1_below = {1025, 513},
    .two_threads_below = {2049, 1025},
    .serial_rank2_below = 2048,
};

constexpr DftTuning PentiumIII() {
    DftTuning tuning = kDefault;
    tuning.name = "pentiumiii";
    tuning.table_alignment = 32;
    tuning.two_level_up_to[0] = 32768;
    tuning.group[0] = 32768;
    tuning.group_block[0] = 512;
    tuning.scale_last_forward = true;
    return tuning;
}

constexpr DftTuning Pentium4(const char* name) {
    DftTuning tuning = kDefault;
    tuning.name = name;
    tuning.table_alignment = 64;
    tuning.one_shot_below[0] = 4096;
    tuning.one_shot_below[1] = 1024;
    tuning.small_log2_below[0] = 13;
    tuning.group_block[0] = 512;
    tuning.serial_rank1_below[0] = 4097;
    tuning.serial_rank1_below[1] = 1025;
    tuning.two_threads_below[1] = 2049;
    return tuning;
}

constexpr DftTuning kTunings[kVariants] = {kDefault, PentiumIII(), Pentium4("pentium4"), Pentium4("pentium4_sse3")};

} // namespace

const DftTuning& dft_tuning_of(std::int32_t code) {
    return kTunings[static_cast<std::size_t>(code)];
}

const DftTuning& dft_tuning() {
    return dft_tuning_of(dft_select_variant());
}

} // namespace dft
