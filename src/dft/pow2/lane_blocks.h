// Short blocks of one line, a lane each: how a line with vectors within it runs the passes on fewer elements than a
// vector holds. For vector sources only.
#pragma once

#include "dft/pow2/depth_first.h"

namespace dft::CLARIBOX_VECTOR_CLASS {

/// The vector that holds consecutive elements of a line of T.
template <typename T>
using VectorWithin = typename simd::CLARIBOX_VECTOR_CLASS::VectorOf<T, simd::CLARIBOX_VECTOR_CLASS::kLanes<T>>::Type;

/// A line of blocks of 16 or 32 elements, `groups` to a lane. A group has one block per lane, that of lane l at index
/// (l bit-reversed) * groups + group, so that one frequency of all of them is a vector of the spectrum.
template <typename V, int points>
struct LaneBlocks {
    static constexpr int kLanes = kLines<V>;
    static constexpr int kVectors = points / kLanes; ///< in a block

    std::ptrdiff_t groups;

    std::ptrdiff_t BlockOf(int lane, std::ptrdiff_t group) const { return kReversed<kLanes>.of[lane] * groups + group; }

    /// Point k of the blocks of a group to x[k].
    template <typename Line>
    void LoadBlocks(Line line, std::ptrdiff_t group, LaneComplex<V>* x) const {
        using simd::CLARIBOX_VECTOR_CLASS::Unrolled;
        for (int part = 0; part < kVectors; ++part) {
            V re[kLanes];
            V im[kLanes];
            Unrolled<kLanes>([&](int lane) {
                const LaneComplex<V> row = Load(line, BlockOf(lane, group) * kVectors + part);
                re[lane] = row.re;
                im[lane] = row.im;
            });
            simd::CLARIBOX_VECTOR_CLASS::Transpose(re);
            simd::CLARIBOX_VECTOR_CLASS::Transpose(im);
            Unrolled<kLanes>([&](int k) { x[part * kLanes + k] = {re[k], im[k]}; });
        }
    }

    /// And back.
    template <typename Line>
    void StoreBlocks(const LaneComplex<V>* x, std::ptrdiff_t group, Line line) const {
        using simd::CLARIBOX_VECTOR_CLASS::Unrolled;
        for (int part = 0; part < kVectors; ++part) {
            V re[kLanes];
            V im[kLanes];
            Unrolled<kLanes>([&](int k) {
                re[k] = x[part * kLanes + k].re;
                im[k] = x[part * kLanes + k].im;
            });
            simd::CLARIBOX_VECTOR_CLASS::Transpose(re);
            simd::CLARIBOX_VECTOR_CLASS::Transpose(im);
            Unrolled<kLanes>([&](int lane) {
                Store(line, BlockOf(lane, group) * kVectors + part, LaneComplex<V>{re[lane], im[lane]});
            });
        }
    }

    /// The vector of the natural order that holds a point of all blocks of a group.
    std::ptrdiff_t NaturalVector(int point, std::ptrdiff_t reversedGroup) const {
        return kReversed<points>.of[point] * groups + reversedGroup;
    }
    template <typename Line>
    void LoadNatural(Line line, std::ptrdiff_t reversedGroup, LaneComplex<V>* x) const {
        simd::CLARIBOX_VECTOR_CLASS::Unrolled<points>(
            [&](int point) { x[point] = Load(line, NaturalVector(point, reversedGroup)); });
    }
    void StoreNatural(const LaneComplex<V>* x, std::ptrdiff_t reversedGroup, Interleaved<V> line) const {
        simd::CLARIBOX_VECTOR_CLASS::Unrolled<points>(
            [&](int point) { Store(line, NaturalVector(point, reversedGroup), x[point]); });
    }
};

/// Transforms a block of 16 or 32 elements in each lane with the twiddles of its one stage.
template <int points, Direction direction, Order order, typename V>
inline void TransformBlock(LaneComplex<V>* x, TripleSeries<AcrossLines<V>> twiddles) {
    constexpr int kSmall = points / 4;
    const auto smallBlocks = [x] {
        simd::CLARIBOX_VECTOR_CLASS::Unrolled<4>(
            [x](int k) { TransformSmallBlock<kSmall, direction, order>(x + kSmall * k); });
    };
    if constexpr (order == kToNatural) {
        smallBlocks();
    }
    Pass4<direction, order, kDecimation<order, false>>(x, x, kSmall, 1, twiddles);
    if constexpr (order == kToBitReversed) {
        smallBlocks();
    }
}

/// The last passes of a record's line with vectors within it: the blocks of 16 elements in block number `block` of
/// 2^bits.
template <typename V>
class LastSixteens {
public:
    using T = Real<V>;

    LastSixteens(const Pow2Schedule<T>& schedule, LaneComplex<V>* scratch, T* data, int bits, std::ptrdiff_t block)
        : m_Schedule(schedule), m_Scratch(scratch), m_Data{data},
          m_First(block << (bits - 4)), m_Blocks{(std::ptrdiff_t{1} << (bits - 4)) / kLines<V>} {}

    /// Forward from scratch to data, backward from data to scratch. The data is in natural order or in bit-reversed.
    template <Direction direction>
    [[gnu::flatten]] void Run(bool natural) const {
        std::ptrdiff_t reversed = 0;
        for (std::ptrdiff_t group = 0; group < m_Blocks.groups; ++group) {
            LaneComplex<V> x[16];
            if constexpr (direction == kForward) {
                m_Blocks.LoadBlocks(m_Scratch, group, x);
                Transform<kForward, kToBitReversed>(group, x);
                natural ? m_Blocks.StoreNatural(x, reversed, m_Data) : m_Blocks.StoreBlocks(x, group, m_Data);
            } else {
                natural ? m_Blocks.LoadNatural(m_Data, reversed, x) : m_Blocks.LoadBlocks(m_Data, group, x);
                Transform<kBackward, kToNatural>(group, x);
                m_Blocks.StoreBlocks(x, group, m_Scratch);
            }
            reversed = NextReversed(reversed, m_Blocks.groups / 2);
        }
    }

private:
    /// The triples of `count` adjacent blocks of a pass, the first of which is number count * BlockOf(lane).
    template <int count>
    void GatherTriples(std::ptrdiff_t group, TwiddleTriple<V>* triples) const {
        constexpr int kLanes = kLines<V>;
        constexpr int kNumbers = 6 * count;
        V numbers[kNumbers < kLanes ? kLanes : kNumbers];
        for (int first = 0; first < kNumbers; first += kLanes) {
            // The last square overlaps the one before.
            const int from = kNumbers >= kLanes && first + kLanes > kNumbers ? kNumbers - kLanes : first;
            simd::CLARIBOX_VECTOR_CLASS::Unrolled<kLanes>([&](int lane) {
                numbers[from + lane] = simd::CLARIBOX_VECTOR_CLASS::Load<V>(
                    m_Schedule.table.triples + (m_First + m_Blocks.BlockOf(lane, group)) * kNumbers + from);
            });
            simd::CLARIBOX_VECTOR_CLASS::Transpose(numbers + from);
        }
        for (int k = 0; k < count; ++k) {
            const V* const at = numbers + 6 * k;
            triples[k] = {{at[0], at[1]}, {at[2], at[3]}, {at[4], at[5]}};
        }
    }

    /// The two last passes, lane by lane.
    template <Direction direction, Order order>
    void Transform(std::ptrdiff_t group, LaneComplex<V>* x) const {
        if (m_Schedule.table.triples == nullptr) {
            return TransformBlock<16, direction, order>(x, TripleSeries<AcrossLines<V>>{SeriesOf(m_Schedule, 4)});
        }
        constexpr Decimation decimation = kDecimation<order, true>;
        TwiddleTriple<V> whole;
        TwiddleTriple<V> quarters[4];
        GatherTriples<1>(group, &whole);
        GatherTriples<4>(group, quarters);
        if constexpr (order == kToBitReversed) {
            Pass4<direction, order, decimation>(x, x, 4, 1, [&](std::ptrdiff_t) { return whole; });
        }
        simd::CLARIBOX_VECTOR_CLASS::Unrolled<4>(
            [&](int k) { Radix4Butterfly<direction, order, decimation>(x + 4 * k, x + 4 * k, 0, 1, quarters[k]); });
        if constexpr (order == kToNatural) {
            Pass4<direction, order, decimation>(x, x, 4, 1, [&](std::ptrdiff_t) { return whole; });
        }
    }

    const Pow2Schedule<T>& m_Schedule;
    LaneComplex<V>* m_Scratch;
    Interleaved<V> m_Data;
    std::ptrdiff_t m_First;
    LaneBlocks<V, 16> m_Blocks;
};

} // namespace dft::CLARIBOX_VECTOR_CLASS
