// Which of the four processor variants runs, and the constants in which they differ. One implementation serves all.
#pragma once

#include <atomic>
#include <cstdint>
#include <string_view>

namespace dft {

/// Limits and sizes of one variant. Lengths are in elements; [0] is single precision, [1] double.
struct DftTuning {
    const char* name;                    ///< "default", "pentiumiii", "pentium4", "pentium4_sse3"
    std::int32_t table_alignment;        ///< bytes
    std::int32_t one_shot_below[2];      ///< complex, rank 1
    std::int32_t one_shot_real_below[2]; ///< packed format 54
    std::int32_t small_log2_below[2];    ///< the whole transform in one go
    std::int32_t two_level_up_to[2];
    std::int32_t two_level_block[2];
    std::int32_t group[2]; ///< of the three-level form
    std::int32_t group_block[2];
    bool scale_last_forward;            ///< the single-precision forward transform scales after all passes
    std::int32_t serial_rank1_below[2]; ///< threads for longer lines only
    std::int32_t two_threads_below[2];  ///< rank 1: at most two threads; [0] is single out of place
    std::int32_t serial_rank2_below;    ///< elements of a plane
};

inline constexpr int kVariants = 4;

/// What a processor says of itself by the instruction CPUID.
struct ProcessorIdentity {
    bool has_cpuid;    ///< the other members mean nothing without
    char vendor[12];   ///< leaf 0: EBX, EDX, ECX
    std::uint32_t eax; ///< leaf 1: model in bits 4 to 7, family in bits 8 to 11
    std::uint32_t ebx; ///< leaf 1: brand index in the low byte
    std::uint32_t ecx; ///< leaf 1: SSE3 in bit 0
};

/// -1 until selected, then 0 to 3.
extern std::atomic<std::int32_t> dft_variant_code;

/// The variant in force, chosen at the first call: by the environment variable `CLARIBOX_DFT_VARIANT`, else by
/// processor.
std::int32_t dft_select_variant();

/// The code a value of the environment variable asks for: 1 to 3 as atoi reads it, or exactly "0"; -1 for any other.
/// Only the first 32 characters count.
std::int32_t dft_variant_of_override(std::string_view value);

/// The code for a processor.
std::int32_t dft_variant_of_processor(const ProcessorIdentity& processor);

/// The constants of a variant, 0 to 3, and of the variant in force.
const DftTuning& dft_tuning_of(std::int32_t code);
const DftTuning& dft_tuning();

} // namespace dft
