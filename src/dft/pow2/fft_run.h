// A run of a plan of a power of two over one line or a batch: decimation in time, from natural to natural order. For
// vector sources only.
#pragma once

#include "dft/pow2/lane_blocks.h"

namespace dft::CLARIBOX_VECTOR_CLASS {

/// Orders 0 to 3, which have no tables.
template <Direction direction, typename V>
inline void FftRunTiny(int order, const LaneComplex<V>* in, LaneComplex<V>* out) {
    const auto load = [=](int k) { return in[k]; };
    const auto store = [=](int j, LaneComplex<V> x) { out[j] = x; };
    switch (order) {
    case 0:
        return store(0, load(0));
    case 1:
        return Transform2<direction>(load, store);
    case 2:
        return Transform4<direction>(load, store);
    default:
        return Transform8<direction, V>(load, store);
    }
}

/// An index with all its bits reversed, by the second form of the table (fft_plan.h).
inline std::ptrdiff_t ReversedIndex(const std::int32_t* halves, int order, std::ptrdiff_t index) {
    const int half = (order + 1) / 2;
    const std::ptrdiff_t low = index & ((std::ptrdiff_t{1} << half) - 1);
    const std::ptrdiff_t reversedLow = halves[low];
    return reversedLow << (order - half) | halves[index >> half] >> (2 * half - order);
}

/// The first pass: all blocks of 4 or 8, gathered from the natural order. Block a takes every 2^(order - firstBits)-th
/// element from b on, b being a with its bits reversed. The arrays are not the same.
template <Direction direction, typename V>
inline void GatherFirstBlocks(const BasicFftPlan<Real<V>>& plan, const LaneComplex<V>* in, LaneComplex<V>* out) {
    const int firstBits = FirstBlockBits(plan.order);
    const std::ptrdiff_t step = std::ptrdiff_t{1} << (plan.order - firstBits);
    const auto gather = [=](const LaneComplex<V>* from, LaneComplex<V>* to) {
        const auto load = [=](int k) { return from[k * step]; };
        const auto store = [=](int j, LaneComplex<V> x) { to[j] = x; };
        if (firstBits == 2) {
            Transform4<direction>(load, store);
        } else {
            Transform8<direction, V>(load, store);
        }
    };
    if (plan.order < kBlockedOrder) {
        const std::int32_t* const pairs = plan.bit_reversal + 1;
        for (std::int32_t k = 0; k < 2 * plan.bit_reversal[0]; k += 2) {
            const std::int32_t a = pairs[k];
            const std::int32_t b = pairs[k + 1];
            gather(in + b, out + (a << firstBits));
            if (a != b) {
                gather(in + a, out + (b << firstBits));
            }
        }
        return;
    }
    for (std::ptrdiff_t k = 0; k < std::ptrdiff_t{1} << plan.order; k += std::ptrdiff_t{1} << firstBits) {
        gather(in + ReversedIndex(plan.bit_reversal, plan.order, k), out + k);
    }
}

/// Whether a run over V may have vectors within a line: one line does, where there are vectors.
template <typename V>
inline constexpr bool kHasVectorsWithin = kLines<V> == 1 && kLines<BatchSingle> > 1;

/// The lowest order, even or odd as the given one, with a block for each lane of V and a pass above the blocks.
template <typename V>
inline int ShortestWithin(int order) {
    return (order % 2 == 0 ? 4 : 5) + (kLines<V> > 4 ? 4 : 2);
}

/// One line with vectors within it. The first two passes make blocks of `points` elements, 16 (even order) or 32
/// (odd), one per lane. `held` holds the line up to the last pass; it is `out` or disjoint from both arrays, which may
/// then be the same.
template <int points, Direction direction, typename V>
[[gnu::flatten]] void FftFirstBlocksWithin(const BasicFftPlan<Real<V>>& plan, Interleaved<V, const Real<V>> in,
                                           Separated<V> held) {
    constexpr int kBits = points == 16 ? 4 : 5;
    const LaneBlocks<V, points> blocks = {(std::ptrdiff_t{1} << (plan.order - kBits)) / kLines<V>};
    const TripleSeries<AcrossLines<V>> twiddles = {SeriesOf(plan, kBits)};
    std::ptrdiff_t reversed = 0;
    for (std::ptrdiff_t group = 0; group < blocks.groups; ++group) {
        LaneComplex<V> x[points];
        blocks.LoadNatural(in, reversed, x);
        TransformBlock<points, direction, kToNatural>(x, twiddles);
        blocks.StoreBlocks(x, group, held);
        reversed = NextReversed(reversed, blocks.groups / 2);
    }
}
template <Direction direction, typename V>
void FftRunWithin(const BasicFftPlan<Real<V>>& plan, const Complex<Real<V>>* in, Complex<Real<V>>* out,
                  Complex<Real<V>>* held) {
    const Interleaved<V, const Real<V>> from = {&in->re};
    const Separated<V> line = {&held->re};
    const int blockBits = FirstBlockBits(plan.order) + 2;
    if (blockBits == 4) {
        FftFirstBlocksWithin<16, direction>(plan, from, line);
    } else {
        FftFirstBlocksWithin<32, direction>(plan, from, line);
    }
    Radix4Passes<WithinLine<V>, direction, kToNatural>(plan, Interleaved<V>{&out->re}, line, plan.order, blockBits, 0,
                                                       NoLeaves{});
}

/// The transform, unscaled, in place or disjoint. `scratch` holds 2^order elements, and is used only in place below
/// kBlockedOrder.
template <Direction direction, typename V>
void FftRun(const BasicFftPlan<Real<V>>& plan, const LaneComplex<V>* in, LaneComplex<V>* out, LaneComplex<V>* scratch) {
    const int order = plan.order;
    const bool reversesInPlace = in == out && order >= kBlockedOrder;
    LaneComplex<V>* const work = in == out && !reversesInPlace ? scratch : out;
    if (order < 4) {
        return FftRunTiny<direction, V>(order, in, out);
    }
    if constexpr (kHasVectorsWithin<V>) {
        if (order >= ShortestWithin<VectorWithin<V>>(order) && !reversesInPlace) {
            return FftRunWithin<direction, VectorWithin<V>>(plan, in, out, work);
        }
    }
    const auto passes = [&](const auto& leaves) {
        Radix4Passes<AcrossLines<V>, direction, kToNatural>(plan, out, work, order, FirstBlockBits(order), 0, leaves);
    };
    if (!reversesInPlace) {
        GatherFirstBlocks<direction, V>(plan, in, work);
        return passes(NoLeaves{});
    }
    for (std::ptrdiff_t k = 0; k < std::ptrdiff_t{1} << order; ++k) {
        const std::ptrdiff_t other = ReversedIndex(plan.bit_reversal, order, k);
        if (k < other) {
            Swap(out[k], out[other]);
        }
    }
    passes([&](LaneComplex<V>* block, int bits, std::ptrdiff_t) {
        TransformSmallBlocks<direction, kToNatural>(block, FirstBlockBits(order), bits);
    });
}

} // namespace dft::CLARIBOX_VECTOR_CLASS
