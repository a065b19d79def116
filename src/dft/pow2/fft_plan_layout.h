// What the tables of a power-of-two plan hold, for those who build and those who read them. Free of inline functions
// that vector sources could share.
#pragma once

namespace dft {

/// From this order on the bit reversal works in place and its table has the second form.
inline constexpr int kBlockedOrder = 15;

/// `bit_reversal` of a lower order: the number of pairs, then each pair (a, b), a <= b, of blocks of the first pass
/// whose indices are each other's bits reversed. Those blocks have 4 (even order) or 8 (odd) elements. In the second
/// form it holds the reversals of the lower half, rounded up, of the bits of an index.
///
/// `stage_tables` holds the stages up to this one, `large_tables` those after it.
inline constexpr int kLastSmallStage = 15;

} // namespace dft
