// What the sources of vector members share. All functions are static: each source has copies of its own, in its own
// instructions.
#pragma once

#include "kernels/rows/PlainMembers.h"

namespace processor {

/// How many of `count` elements the vector body takes.
template <std::uint32_t perPass>
static constexpr std::uint32_t InWholePasses(std::uint32_t count) {
    return count - count % perPass;
}

/// `DecimateU8` with `pass(row, output)` for every 2 * `outputs` whole source bytes of a row.
template <std::uint32_t outputs, typename Pass>
static void DecimateRows(std::uint8_t* destination, const std::uint8_t* source, std::int32_t width, std::int32_t height,
                         Pass pass) {
    if (width <= 0) {
        return;
    }
    const auto stride = static_cast<std::uint32_t>(width);
    const std::uint32_t whole = InWholePasses<2 * outputs>(stride);
    for (std::int32_t y = 0; y < height / 2; ++y) {
        for (std::uint32_t x = 0; x < whole; x += 2 * outputs) {
            pass(source + x, destination + x / 2);
        }
        // Of a plane of two rows the plain member picks from the first alone.
        kernels::DecimateU8(destination + whole / 2, source + whole, static_cast<std::int32_t>(stride - whole), 2);
        destination += stride / 2;
        source += std::size_t{2} * stride;
    }
}

} // namespace processor
