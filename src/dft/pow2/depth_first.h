// The radix-4 passes of a block, for records and plans, depth first: all but the outermost run in the first-level
// cache. For vector sources only.
#pragma once

#include "dft/pow2/fft_plan.h"
#include "dft/pow2/layouts.h"
#include "dft/pow2/schedule.h"
#include "dft/pow2/stage_tables.h"

namespace dft::CLARIBOX_VECTOR_CLASS {

/// Log2 of the elements of a line for which the first-level cache is surely large enough.
template <typename Vectors>
inline constexpr int kCachedLineBits = [] {
    int bits = 0;
    while ((sizeof(LaneComplex<typename Vectors::Vector>) / Vectors::kPoints) << (bits + 1) <= 32768) {
        ++bits;
    }
    return bits;
}();

/// Twiddles W^j, W^2j, W^3j of the elements of vector j, from a series in groups of four (stage_tables.h).
template <typename Vectors>
struct TripleSeries {
    const Real<typename Vectors::Vector>* series;
    TwiddleTriple<typename Vectors::Root> operator()(std::ptrdiff_t j) const {
        const auto part = [&](int number) { return Vectors::RootAt(series + 4 * number, 24, j); };
        return {{part(0), part(1)}, {part(2), part(3)}, {part(4), part(5)}};
    }
};

/// The series of a stage of 2^bits points: of a record, among the static tables; of a plan, in its own.
template <typename T>
inline const T* SeriesOf(const Pow2Schedule<T>& schedule, int bits) {
    return schedule.even + 2 * ((1 << kStaticBits) - (1 << bits));
}
template <typename T>
inline const T* SeriesOf(const BasicFftPlan<T>& plan, int bits) {
    const bool small = bits <= kLastSmallStage;
    const int first = FirstBlockBits(plan.order) + (small ? 2 : 14);
    // Stage k takes 3/2 * 2^k numbers, so all before it (2^k - 2^first) / 2.
    const std::ptrdiff_t before = ((std::ptrdiff_t{1} << bits) - (std::ptrdiff_t{1} << first)) / 2;
    return (small ? plan.stage_tables : plan.large_tables) + before;
}

/// The triples by block that stand in for series: long records have them, plans never.
template <typename T>
inline const T* TriplesOf(const Pow2Schedule<T>& schedule) {
    return schedule.table.triples;
}
template <typename T>
inline const T* TriplesOf(const BasicFftPlan<T>&) {
    return nullptr;
}
template <typename T>
inline TwiddleTriple<T> TripleAt(const T* triples, std::ptrdiff_t block) {
    const T* const triple = triples + 6 * block;
    return {{triple[0], triple[1]}, {triple[2], triple[3]}, {triple[4], triple[5]}};
}

/// With series, passes to bit-reversed order decimate in frequency, those back in time, and twiddles depend on the
/// element. With triples it is the other way round, and one triple serves a whole block.
template <Order order, bool triples>
inline constexpr Decimation kDecimation = (order == kToBitReversed) == triples ? kInTime : kInFrequency;

/// A radix-4 pass on `blocks` adjacent blocks of 2^bits elements, the first of which is number `block` of its size.
template <typename Vectors, Direction direction, Order order, typename Twiddles, typename In, typename Out>
inline void Radix4Pass(const Twiddles& twiddles, In in, Out out, int bits, std::ptrdiff_t block,
                       std::ptrdiff_t blocks) {
    const std::ptrdiff_t quarter = (std::ptrdiff_t{1} << (bits - 2)) / Vectors::kPoints;
    if (TriplesOf(twiddles) != nullptr) {
        for (std::ptrdiff_t k = 0; k < blocks; ++k) {
            const auto triple = TripleAt(TriplesOf(twiddles), block + k);
            Pass4<direction, order, kDecimation<order, true>>(in + 4 * quarter * k, out + 4 * quarter * k, quarter, 1,
                                                              [=](std::ptrdiff_t) { return triple; });
        }
        return;
    }
    Pass4<direction, order, kDecimation<order, false>>(in, out, quarter, blocks,
                                                       TripleSeries<Vectors>{SeriesOf(twiddles, bits)});
}

/// The radix-4 passes between block number `block` of 2^bits elements and its blocks of 2^leafBits, which leaves(work,
/// bits, block) transforms; bits - leafBits is even. To bit-reversed order the first pass reads `outer`, to natural
/// order the last one writes it; the rest runs in `work`, which may be the same.
template <typename Vectors, Direction direction, Order order, typename Twiddles, typename Outer, typename Work,
          typename Leaves>
void Radix4Passes(const Twiddles& twiddles, Outer outer, Work work, int bits, int leafBits, std::ptrdiff_t block,
                  const Leaves& leaves) {
    constexpr bool toNatural = order == kToNatural;
    if (bits <= leafBits) {
        return leaves(work, bits, block);
    }
    const auto pass = [&](auto in, auto out, int at) {
        Radix4Pass<Vectors, direction, order>(twiddles, in, out, at, block << (bits - at),
                                              std::ptrdiff_t{1} << (bits - at));
    };
    if constexpr (!toNatural) {
        pass(outer, work, bits);
    }
    if (bits > kCachedLineBits<Vectors>) {
        for (std::ptrdiff_t k = 0; k < 4; ++k) {
            const Work part = work + (k << (bits - 2)) / Vectors::kPoints;
            Radix4Passes<Vectors, direction, order>(twiddles, part, part, bits - 2, leafBits, 4 * block + k, leaves);
        }
    } else if constexpr (toNatural) {
        leaves(work, bits, block);
        for (int at = leafBits + 2; at < bits; at += 2) {
            pass(work, work, at);
        }
    } else {
        for (int at = bits - 2; at > leafBits; at -= 2) {
            pass(work, work, at);
        }
        leaves(work, bits, block);
    }
    if constexpr (toNatural) {
        pass(work, outer, bits);
    }
}

/// For blocks that were transformed before.
struct NoLeaves {
    template <typename Work>
    void operator()(Work, int, std::ptrdiff_t) const {}
};

/// Transforms a block of 4 or 8 elements in place, from bit-reversed to natural order or back.
template <int size, Direction direction, Order order, typename V>
[[gnu::always_inline]] inline void TransformSmallBlock(LaneComplex<V>* at) {
    const auto load = [=](int k) { return at[order == kToNatural ? kReversed<size>.of[k] : k]; };
    const auto store = [=](int j, LaneComplex<V> x) { at[order == kToNatural ? j : kReversed<size>.of[j]] = x; };
    if constexpr (size == 4) {
        Transform4<direction>(load, store);
    } else {
        Transform8<direction, V>(load, store);
    }
}

/// The same of all blocks of 2^blockBits among 2^bits elements.
template <Direction direction, Order order, typename V>
inline void TransformSmallBlocks(LaneComplex<V>* data, int blockBits, int bits) {
    for (LaneComplex<V>* at = data; at < data + (std::ptrdiff_t{1} << bits); at += std::ptrdiff_t{1} << blockBits) {
        if (blockBits == 2) {
            TransformSmallBlock<4, direction, order>(at);
        } else {
            TransformSmallBlock<8, direction, order>(at);
        }
    }
}

} // namespace dft::CLARIBOX_VECTOR_CLASS
