// The twiddles of all transforms up to 4096 points: constant, and shared by all jobs.
#pragma once

namespace dft {

inline constexpr int kStaticBits = 12; ///< log2 of the longest stage

/// Each level serves the stage of N points. Its numbers stand in groups of four consecutive j: four times
/// cos(2 pi j / N), four times -sin(2 pi j / N), and so on.
template <typename Real>
struct StaticTables {
    /// N = 4096, 1024, 256, 64, 16, one after the other: j below N / 4, in each group the numbers of j, 2j and 3j. The
    /// level of N starts at number 2 * (4096 - N).
    Real even[8184];
    /// N = 2048, 512, 128, 32: j below N / 4, the first half of the twiddles of a radix-2 stage. The level of N starts
    /// at number (4096 - 2 * N) / 3.
    Real odd[1360];
};

/// Computed at the first call.
template <typename Real>
const StaticTables<Real>& static_tables();

} // namespace dft
