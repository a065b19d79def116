// A run of a power-of-two plan over one line with vectors along it. For vector sources only.
//
// The first two passes make blocks of 16 (even order) or 32 (odd) elements, a block in each lane. The others go over
// vectors of consecutive elements. The arithmetic is that of the other forms, in the same order.
#pragma once

#include "dft/pow2/fft_stages.h"
#include "dft/pow2/lane_blocks.h"

namespace dft::CLARIBOX_VECTOR_CLASS {

/// Whether a run over V may have vectors along it: one line does, where there are vectors.
#if defined(CLARIBOX_VECTOR_Portable)
template <typename V>
inline constexpr bool kHasVectorsAlong = false;
#else
template <typename V>
inline constexpr bool kHasVectorsAlong = kLines<V> == 1;
#endif

/// The vector that holds consecutive elements of a line of T.
template <typename T>
using VectorAlong = typename simd::CLARIBOX_VECTOR_CLASS::VectorOf<T, simd::CLARIBOX_VECTOR_CLASS::kLanes<T>>::Type;

/// The lowest order, even or odd as the given one, with a block for each lane and a pass above the blocks.
template <typename T>
inline int ShortestAlong(int order) {
    return (order % 2 == 0 ? 4 : 5) + (kLines<VectorAlong<T>> > 4 ? 4 : 2);
}

/// The blocks of `points` elements of a line of 2^order in natural order, to where the line is held.
template <int points, Direction direction, typename V>
[[gnu::flatten]] void FirstBlocksAlong(const BasicFftPlan<Real<V>>& plan, Interleaved<V, const Real<V>> in,
                                       Separated<V> held) {
    constexpr int kBits = points == 16 ? 4 : 5;
    const LaneBlocks<V, points> blocks = {(std::ptrdiff_t{1} << (plan.order - kBits)) / kLines<V>};
    std::ptrdiff_t reversed = 0;
    for (std::ptrdiff_t group = 0; group < blocks.groups; ++group) {
        LaneComplex<V> x[points];
        blocks.LoadNatural(in, reversed, x);
        UnscrambleFirstBlocks<direction>(x, FirstBits(plan), kBits);
        Pass4<direction, kUnscramble, kBefore>(x, x, points / 4, 1, StageTwiddles<Beside<V>>(plan, kBits));
        blocks.TurnBack(x, group, held);
        std::ptrdiff_t bit = blocks.groups / 2;
        for (; (reversed & bit) != 0; bit /= 2) {
            reversed ^= bit;
        }
        reversed |= bit;
    }
}

/// The transform, unscaled, from natural to natural order. `held`, which is `out` or overlaps neither `in` nor it,
/// holds the line up to the last pass; `in` is `out` only if `held` is not.
template <Direction direction, typename V>
void FftRunAlong(const BasicFftPlan<Real<V>>& plan, const Complex<Real<V>>* in, Complex<Real<V>>* out,
                 Complex<Real<V>>* held) {
    const Interleaved<V, const Real<V>> from = {&in->re};
    const Separated<V> line = {&held->re};
    const int firstBits = FirstBits(plan) + 2;
    if (firstBits == 4) {
        FirstBlocksAlong<16, direction>(plan, from, line);
    } else {
        FirstBlocksAlong<32, direction>(plan, from, line);
    }
    const std::ptrdiff_t quarter = (std::ptrdiff_t{1} << (plan.order - 2)) / kLines<V>;
    for (int k = 0; k < 4; ++k) {
        TimePassesOf<direction, Along<V>>(plan, line + k * quarter, plan.order - 2, firstBits);
    }
    Pass4<direction, kUnscramble, kBefore>(line, Interleaved<V>{&out->re}, quarter, 1,
                                           StageTwiddles<Along<V>>(plan, plan.order));
}

} // namespace dft::CLARIBOX_VECTOR_CLASS
