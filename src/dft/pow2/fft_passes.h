// Passes of a power-of-two plan over one line or a batch. For vector sources only.
//
// A plan's blocks start with 4 (even order) or 8 (odd) elements and grow by radix 4. Blocks are worked on depth first,
// so that all passes but the last few run in the first-level cache.
#pragma once

#include "dft/lane_complex.h"
#include "dft/plans/dft_plan.h"
#include "dft/pow2/fft_plan_layout.h"
#include "dft/pow2/radix_passes.h"

namespace dft::CLARIBOX_VECTOR_CLASS {

/// Log2 of the elements of a block for which the first-level cache is surely large enough.
template <typename V>
inline constexpr int kCachedBits = sizeof(V) == 64   ? 8
                                   : sizeof(V) == 32 ? 9
                                   : sizeof(V) == 16 ? 10
                                   : sizeof(V) == 8  ? 11
                                                     : 12;

/// Log2 of the elements of the smallest blocks.
template <typename T>
inline int FirstBits(const BasicFftPlan<T>& plan) {
    return plan.order % 2 == 0 ? 2 : 3;
}

/// The twiddles of a stage of 2^stage points.
template <typename T>
inline GroupsOfFour<T> StageTwiddles(const BasicFftPlan<T>& plan, int stage) {
    const bool small = stage <= kLastSmallStage;
    const int first = FirstBits(plan) + (small ? 2 : 14);
    // Stage k takes 3/2 * 2^k numbers, so all before it (2^k - 2^first) / 2.
    const std::ptrdiff_t before = ((std::ptrdiff_t{1} << stage) - (std::ptrdiff_t{1} << first)) / 2;
    return {(small ? plan.stage_tables : plan.large_tables) + before};
}

/// Positions of the frequencies of a block of 4 or 8 in bit-reversed order, and the other way round.
inline constexpr int kReversed4[] = {0, 2, 1, 3};
inline constexpr int kReversed8[] = {0, 4, 2, 6, 1, 5, 3, 7};

/// Transforms 2^bits elements, in place, in blocks of 2^firstBits from bit-reversed to natural order.
template <Direction direction, typename V>
inline void UnscrambleFirstBlocks(LaneComplex<V>* data, int firstBits, int bits) {
    for (LaneComplex<V>* at = data; at < data + (std::ptrdiff_t{1} << bits); at += std::ptrdiff_t{1} << firstBits) {
        const auto store = [=](int j, LaneComplex<V> x) { at[j] = x; };
        if (firstBits == 2) {
            Transform4<direction>([=](int k) { return at[kReversed4[k]]; }, store);
        } else {
            Transform8<direction, V>([=](int k) { return at[kReversed8[k]]; }, store);
        }
    }
}

/// The same from natural to bit-reversed order.
template <Direction direction, typename V>
inline void ScrambleLastBlocks(LaneComplex<V>* data, int firstBits, int bits) {
    for (LaneComplex<V>* at = data; at < data + (std::ptrdiff_t{1} << bits); at += std::ptrdiff_t{1} << firstBits) {
        const auto load = [=](int k) { return at[k]; };
        if (firstBits == 2) {
            Transform4<direction>(load, [=](int j, LaneComplex<V> x) { at[kReversed4[j]] = x; });
        } else {
            Transform8<direction, V>(load, [=](int j, LaneComplex<V> x) { at[kReversed8[j]] = x; });
        }
    }
}

/// Makes one block of 2^stage elements of `data`, which holds finished blocks of 2^finished elements, or, where that is
/// 0, elements in bit-reversed order.
template <Direction direction, typename V>
void TimePasses(const BasicFftPlan<Real<V>>& plan, LaneComplex<V>* data, int stage, int finished) {
    if (stage <= finished) {
        return;
    }
    const std::ptrdiff_t quarter = std::ptrdiff_t{1} << (stage - 2);
    if (stage > kCachedBits<V>) {
        for (int k = 0; k < 4; ++k) {
            TimePasses<direction, V>(plan, data + k * quarter, stage - 2, finished);
        }
        Pass4<direction, kUnscramble, kBefore>(data, data, quarter, 1, StageTwiddles(plan, stage));
        return;
    }
    if (finished == 0) {
        finished = FirstBits(plan);
        UnscrambleFirstBlocks<direction, V>(data, finished, stage);
    }
    for (int k = finished + 2; k <= stage; k += 2) {
        Pass4<direction, kUnscramble, kBefore>(data, data, std::ptrdiff_t{1} << (k - 2),
                                               std::ptrdiff_t{1} << (stage - k), StageTwiddles(plan, k));
    }
}

/// Takes one block of 2^stage elements apart, down to single elements in bit-reversed order.
template <Direction direction, typename V>
void FrequencyPasses(const BasicFftPlan<Real<V>>& plan, LaneComplex<V>* data, int stage) {
    const std::ptrdiff_t quarter = std::ptrdiff_t{1} << (stage - 2);
    if (stage > kCachedBits<V>) {
        Pass4<direction, kScramble, kAfter>(data, data, quarter, 1, StageTwiddles(plan, stage));
        for (int k = 0; k < 4; ++k) {
            FrequencyPasses<direction, V>(plan, data + k * quarter, stage - 2);
        }
        return;
    }
    const int firstBits = FirstBits(plan);
    for (int k = stage; k > firstBits; k -= 2) {
        Pass4<direction, kScramble, kAfter>(data, data, std::ptrdiff_t{1} << (k - 2), std::ptrdiff_t{1} << (stage - k),
                                            StageTwiddles(plan, k));
    }
    ScrambleLastBlocks<direction, V>(data, firstBits, stage);
}

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
