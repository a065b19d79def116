// Runs of a power-of-two plan over one line or a batch. For vector sources only.
#pragma once

#include "dft/pow2/fft_along.h"
#include "dft/pow2/fft_plan_layout.h"
#include "dft/pow2/fft_stages.h"

namespace dft::CLARIBOX_VECTOR_CLASS {

/// The smallest blocks, gathered from the natural order: block a reads every 2^(order - firstBits)-th element from b
/// on, b being a with its bits reversed.
template <Direction direction, typename V>
inline void GatherFirstBlock(const LaneComplex<V>* in, LaneComplex<V>* out, int firstBits, int order) {
    const std::ptrdiff_t step = std::ptrdiff_t{1} << (order - firstBits);
    const auto load = [=](int k) { return in[k * step]; };
    const auto store = [=](int j, LaneComplex<V> x) { out[j] = x; };
    if (firstBits == 2) {
        Transform4<direction>(load, store);
    } else {
        Transform8<direction, V>(load, store);
    }
}

/// An index with all its bits reversed, by the second form of the table.
inline std::ptrdiff_t ReversedIndex(const std::int32_t* halves, int order, std::ptrdiff_t index) {
    const int half = (order + 1) / 2;
    const std::ptrdiff_t low = index & ((std::ptrdiff_t{1} << half) - 1);
    const std::ptrdiff_t reversedLow = halves[low];
    return reversedLow << (order - half) | halves[index >> half] >> (2 * half - order);
}

/// All smallest blocks of a line, from natural order. The arrays are not the same.
template <Direction direction, typename V>
inline void GatherFirstBlocks(const BasicFftPlan<Real<V>>& plan, const LaneComplex<V>* in, LaneComplex<V>* out) {
    const int firstBits = FirstBits(plan);
    const int order = plan.order;
    if (order < kBlockedOrder) {
        const std::int32_t* const pairs = plan.bit_reversal + 1;
        for (std::int32_t k = 0; k < 2 * plan.bit_reversal[0]; k += 2) {
            const std::int32_t a = pairs[k];
            const std::int32_t b = pairs[k + 1];
            GatherFirstBlock<direction>(in + b, out + (a << firstBits), firstBits, order);
            if (a != b) {
                GatherFirstBlock<direction>(in + a, out + (b << firstBits), firstBits, order);
            }
        }
        return;
    }
    for (std::ptrdiff_t k = 0; k < std::ptrdiff_t{1} << order; k += std::ptrdiff_t{1} << firstBits) {
        GatherFirstBlock<direction>(in + ReversedIndex(plan.bit_reversal, order, k), out + k, firstBits, order);
    }
}

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

template <typename V>
inline void Swap(LaneComplex<V>& a, LaneComplex<V>& b) {
    const LaneComplex<V> x = a;
    a = b;
    b = x;
}

/// The transform, unscaled, from natural to natural order. The arrays are the same or do not overlap. `scratch` holds
/// 2^order elements; it is looked at only in place, and only below kBlockedOrder.
template <Direction direction, typename V>
void FftRun(const BasicFftPlan<Real<V>>& plan, const LaneComplex<V>* in, LaneComplex<V>* out, LaneComplex<V>* scratch) {
    const int order = plan.order;
    if constexpr (kHasVectorsAlong<V>) {
        if (order >= ShortestAlong<V>(order) && !(in == out && order >= kBlockedOrder)) {
            FftRunAlong<direction, VectorAlong<V>>(plan, in, out, in == out ? scratch : out);
            return;
        }
    }
    if (order < 4) {
        FftRunTiny<direction, V>(order, in, out);
    } else if (in != out) {
        GatherFirstBlocks<direction, V>(plan, in, out);
        TimePasses<direction, V>(plan, out, order, FirstBits(plan));
    } else if (order < kBlockedOrder) {
        GatherFirstBlocks<direction, V>(plan, in, scratch);
        const std::ptrdiff_t quarter = std::ptrdiff_t{1} << (order - 2);
        for (int k = 0; k < 4; ++k) {
            TimePasses<direction, V>(plan, scratch + k * quarter, order - 2, FirstBits(plan));
        }
        Pass4<direction, kUnscramble, kBefore>(static_cast<const LaneComplex<V>*>(scratch), out, quarter, 1,
                                               StageTwiddles(plan, order));
    } else {
        for (std::ptrdiff_t k = 0; k < std::ptrdiff_t{1} << order; ++k) {
            const std::ptrdiff_t other = ReversedIndex(plan.bit_reversal, order, k);
            if (k < other) {
                Swap(out[k], out[other]);
            }
        }
        TimePasses<direction, V>(plan, out, order, 0);
    }
}

} // namespace dft::CLARIBOX_VECTOR_CLASS
