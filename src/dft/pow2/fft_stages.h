// The stages of a power-of-two plan over one line or a batch. For vector sources only.
//
// A plan's blocks start with 4 (even order) or 8 (odd) elements and grow by radix 4. Blocks are worked on depth first,
// so that all passes but the last few run in the first-level cache.
#pragma once

#include "dft/pow2/fft_plan.h"
#include "dft/pow2/fft_plan_layout.h"
#include "dft/pow2/ways.h"

namespace dft::CLARIBOX_VECTOR_CLASS {

/// The same for lines beside each other.
template <typename V>
inline constexpr int kCachedBits = kCachedLineBits<Beside<V>>;

/// Log2 of the elements of the smallest blocks.
template <typename T>
inline int FirstBits(const BasicFftPlan<T>& plan) {
    return plan.order % 2 == 0 ? 2 : 3;
}

/// The twiddles of a stage of 2^stage points.
template <typename Way, typename T>
inline TripleSeries<Way, T> StageTwiddles(const BasicFftPlan<T>& plan, int stage) {
    const bool small = stage <= kLastSmallStage;
    const int first = FirstBits(plan) + (small ? 2 : 14);
    // Stage k takes 3/2 * 2^k numbers, so all before it (2^k - 2^first) / 2.
    const std::ptrdiff_t before = ((std::ptrdiff_t{1} << stage) - (std::ptrdiff_t{1} << first)) / 2;
    return {(small ? plan.stage_tables : plan.large_tables) + before};
}
template <typename T>
inline TripleSeries<Beside<T>, T> StageTwiddles(const BasicFftPlan<T>& plan, int stage) {
    return StageTwiddles<Beside<T>>(plan, stage);
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
/// 0, elements in bit-reversed order, which must stand beside each other.
template <Direction direction, typename Way, typename T, typename Data>
void TimePassesOf(const BasicFftPlan<T>& plan, Data data, int stage, int finished) {
    if (stage <= finished) {
        return;
    }
    const auto quarterOf = [](int k) { return (std::ptrdiff_t{1} << (k - 2)) / Way::kPoints; };
    if (stage > kCachedLineBits<Way>) {
        const std::ptrdiff_t quarter = quarterOf(stage);
        for (int k = 0; k < 4; ++k) {
            TimePassesOf<direction, Way>(plan, data + k * quarter, stage - 2, finished);
        }
        Pass4<direction, kUnscramble, kBefore>(data, data, quarter, 1, StageTwiddles<Way>(plan, stage));
        return;
    }
    if constexpr (Way::kPoints == 1) {
        if (finished == 0) {
            finished = FirstBits(plan);
            UnscrambleFirstBlocks<direction>(data, finished, stage);
        }
    }
    for (int k = finished + 2; k <= stage; k += 2) {
        Pass4<direction, kUnscramble, kBefore>(data, data, quarterOf(k), std::ptrdiff_t{1} << (stage - k),
                                               StageTwiddles<Way>(plan, k));
    }
}
template <Direction direction, typename V>
inline void TimePasses(const BasicFftPlan<Real<V>>& plan, LaneComplex<V>* data, int stage, int finished) {
    TimePassesOf<direction, Beside<V>>(plan, data, stage, finished);
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

} // namespace dft::CLARIBOX_VECTOR_CLASS
