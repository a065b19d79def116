// The value of pi in the point spread functions.
#pragma once

#include <bit>
#include <cstdint>

namespace kernels {

/// Given by its bits: 3.141592502593994, one unit in the last place below the float nearest to pi. Required: a better
/// pi would change the last bits of the motion and disk kernels (pinned by tests/kernels/PointSpreadTest.cpp).
inline constexpr float PIF = std::bit_cast<float>(std::uint32_t{0x40490FDA});

} // namespace kernels
