// The passes of a record's transform (schedule.h), from the whole line down to blocks of a few elements and back. For
// vector sources only.
#pragma once

#include "dft/pow2/depth_first.h"

namespace dft::CLARIBOX_VECTOR_CLASS {

template <Direction direction>
inline constexpr Order kOrder = direction == kForward ? kToBitReversed : kToNatural;

template <Direction direction, bool triples>
inline constexpr Decimation kDecimationOf = kDecimation<kOrder<direction>, triples>;

/// The first quarter of the roots of a radix-2 stage, in groups of four.
template <typename T>
struct StageRoots {
    const T* series;
    int stride;

    template <typename Vectors>
    Complex<typename Vectors::Root> At(std::ptrdiff_t j) const {
        return {Vectors::RootAt(series, stride, j), Vectors::RootAt(series + 4, stride, j)};
    }
};

template <typename T>
inline StageRoots<T> RootsOfStage(const Pow2Schedule<T>& schedule, int bits) {
    const std::ptrdiff_t points = std::ptrdiff_t{1} << bits;
    if (schedule.table.stages != nullptr && bits >= kLastStageBits) {
        return {schedule.table.stages + ((std::ptrdiff_t{1} << schedule.log2_length) - points), 8};
    }
    if (bits % 2 != 0) {
        return {schedule.odd + ((1 << kStaticBits) - 2 * points) / 3, 8};
    }
    return {SeriesOf(schedule, bits), 24};
}

/// -i * w: the root a quarter of the circle on.
template <typename W>
inline Complex<W> Turned(Complex<W> w) {
    return {w.im, -w.re};
}

/// One or two radix-2 passes on the block of 2^bits elements that is number `block` of its size.
template <typename Vectors, int levels, Direction direction, typename T, typename In, typename Out>
inline void RunLevels(const Pow2Schedule<T>& schedule, In in, Out out, int bits, std::ptrdiff_t block) {
    const std::ptrdiff_t quarter = (std::ptrdiff_t{1} << (bits - 2)) / Vectors::kPoints;
    if (schedule.table.triples != nullptr) {
        const Complex<T> w = TripleAt(schedule.table.triples, block / 2).w1;
        const Complex<T> whole = block % 2 == 0 ? w : Turned(w);
        const Complex<T> half = TripleAt(schedule.table.triples, block).w1;
        const LevelTwiddles<T> twiddles = {whole, whole, half, Turned(half)};
        Pass2<levels, direction, kDecimationOf<direction, true>>(in, out, quarter, 0, quarter,
                                                                 [=](std::ptrdiff_t) { return twiddles; });
        return;
    }
    using W = typename Vectors::Root;
    constexpr Decimation decimation = kDecimationOf<direction, false>;
    const StageRoots<T> whole = RootsOfStage(schedule, bits);
    if constexpr (levels == 1) {
        Pass2<1, direction, decimation>(in, out, quarter, 0, quarter, [=](std::ptrdiff_t j) {
            const Complex<W> w = whole.template At<Vectors>(j);
            return LevelTwiddles<W>{w, Turned(w), {}, {}};
        });
    } else {
        const StageRoots<T> half = RootsOfStage(schedule, bits - 1);
        Pass2<2, direction, decimation>(in, out, quarter, 0, quarter / 2, [=](std::ptrdiff_t j) {
            const Complex<W> w = whole.template At<Vectors>(j);
            const Complex<W> inner = half.template At<Vectors>(j);
            return LevelTwiddles<W>{w, Turned(w), inner, inner};
        });
        Pass2<2, direction, decimation>(in, out, quarter, quarter / 2, quarter, [=](std::ptrdiff_t j) {
            const Complex<W> w = whole.template At<Vectors>(j);
            const Complex<W> inner = Turned(half.template At<Vectors>(j - quarter / 2));
            return LevelTwiddles<W>{w, Turned(w), inner, inner};
        });
    }
}

template <typename Vectors>
using Elements = LaneComplex<typename Vectors::Vector>*;

/// Where the spectrum of a whole line stands, and whether in natural order or in that of its blocks, bit-reversed.
template <typename Layout>
struct Spectrum {
    Layout data;
    bool isNatural;
};

/// The place of the first frequency of the block of 4 elements that is number `block` of its size.
template <typename T, typename Layout>
inline std::ptrdiff_t PlaceOf(const Pow2Schedule<T>& schedule, Spectrum<Layout> spectrum, std::ptrdiff_t block) {
    if (!spectrum.isNatural) {
        return 4 * block;
    }
    const int middleBits = schedule.log2_length - 4;
    const std::ptrdiff_t middle = block & ((std::ptrdiff_t{1} << middleBits) - 1);
    const std::ptrdiff_t reversed = middleBits == 0 ? 0 : schedule.table.lists.reversals[middle];
    return reversed * 4 + kReversed<4>.of[block >> middleBits];
}

/// The blocks of 4 elements within the block of 2^bits elements that is number `block` of its size, between `work` and
/// the spectrum.
template <Direction direction, typename T, typename V, typename Layout>
inline void RunLastBlocks(const Pow2Schedule<T>& schedule, LaneComplex<V>* work, Spectrum<Layout> spectrum, int bits,
                          std::ptrdiff_t block) {
    constexpr std::ptrdiff_t kBlocksAhead = 4; // are prefetched
    const std::ptrdiff_t blocks = std::ptrdiff_t{1} << (bits - 2);
    const std::ptrdiff_t step = std::ptrdiff_t{1} << (schedule.log2_length - 2);
    const std::ptrdiff_t natural[4] = {0, step, 2 * step, 3 * step};
    const std::ptrdiff_t reversed[4] = {0, 2, 1, 3};
    const std::ptrdiff_t(&place)[4] = spectrum.isNatural ? natural : reversed;
    for (std::ptrdiff_t k = 0; k < blocks; ++k) {
        const std::ptrdiff_t number = block * blocks + k;
        LaneComplex<V>* const at = work + 4 * k;
        const Layout four = spectrum.data + PlaceOf(schedule, spectrum, number);
        const std::ptrdiff_t later = number + kBlocksAhead < step ? number + kBlocksAhead : number;
        const Layout coming = spectrum.data + PlaceOf(schedule, spectrum, later);
        LaneComplex<V> x[4];
        simd::CLARIBOX_VECTOR_CLASS::Unrolled<4>([&](int i) {
            Prefetch(coming, place[i]);
            x[i] = direction == kForward ? at[i] : Load(four, place[i]);
        });
        if (direction == kForward && schedule.table.triples != nullptr) {
            RotateThree<direction>(x[1], x[2], x[3], TripleAt(schedule.table.triples, number));
        }
        Butterfly4<direction>(x[0], x[1], x[2], x[3]);
        if (direction == kBackward && schedule.table.triples != nullptr) {
            RotateThree<direction>(x[1], x[2], x[3], TripleAt(schedule.table.triples, number));
        }
        simd::CLARIBOX_VECTOR_CLASS::Unrolled<4>([&](int i) {
            if constexpr (direction == kForward) {
                Store(four, place[i], x[i]);
            } else {
                at[i] = x[i];
            }
        });
    }
}

/// All passes of block number `block` of 2^bits elements, down to blocks of 2^leafBits. Forward they read `outer`,
/// work in `work` and call leaves(work, bits, block); backward they begin with the leaves and end in `outer`, which
/// may be `work`.
template <typename Vectors, Direction direction, typename T, typename Outer, typename Leaves>
void RunPasses(const Pow2Schedule<T>& schedule, Outer outer, Elements<Vectors> work, int bits, int leafBits,
               std::ptrdiff_t block, const Leaves& leaves) {
    const bool isBlock = bits <= schedule.blockBits;
    if (bits <= leafBits || (isBlock && bits % 2 == 0)) {
        Radix4Passes<Vectors, direction, kOrder<direction>>(schedule, outer, work, bits, leafBits, block, leaves);
        return;
    }
    // Radix-2 passes, by twos where that is possible, take a line to groups, a group to blocks, or an odd block to two.
    const int lastBits = isBlock ? bits - 1 : bits > schedule.groupBits ? schedule.groupBits : schedule.blockBits;
    const int levels = (bits - lastBits) % 2 != 0 ? 1 : 2;
    const auto pass = [&](auto in, auto out) {
        if (levels == 1) {
            RunLevels<Vectors, 1, direction>(schedule, in, out, bits, block);
        } else {
            RunLevels<Vectors, 2, direction>(schedule, in, out, bits, block);
        }
    };
    if constexpr (direction == kForward) {
        pass(outer, work);
    }
    for (std::ptrdiff_t k = 0; k < std::ptrdiff_t{1} << levels; ++k) {
        const Elements<Vectors> part = work + (k << (bits - levels)) / Vectors::kPoints;
        RunPasses<Vectors, direction>(schedule, part, part, bits - levels, leafBits, (block << levels) + k, leaves);
    }
    if constexpr (direction == kBackward) {
        pass(work, outer);
    }
}

} // namespace dft::CLARIBOX_VECTOR_CLASS
