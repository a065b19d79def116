#include "dft/base/variant.h"

#include <cstddef>

namespace dft {
namespace {

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
