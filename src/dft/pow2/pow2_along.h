// The last passes of one line with vectors along it. For vector sources only.
//
// The passes above work on vectors of consecutive elements in a scratch array. The blocks of 16 elements that they
// leave are taken kLines<V> at a time, one a lane, and run beside each other.
#pragma once

#include "dft/pow2/lane_blocks.h"
#include "dft/pow2/pow2_split.h"

namespace dft::CLARIBOX_VECTOR_CLASS {

/// log2 of the elements of the shortest line that has a radix-4 pass above the blocks of 16, and one of them for each
/// lane.
template <typename V>
inline constexpr int kShortestAlong = kLines<V> == 16  ? 8
                                      : kLines<V> == 8 ? 7
                                                       : 6;

/// The blocks of 16 elements of the block of 2^bits elements that is number `block` of its size.
template <typename V>
class LastSixteens {
public:
    using T = Real<V>;

    LastSixteens(const Pow2Form<T>& form, LaneComplex<V>* scratch, T* data, int bits, std::ptrdiff_t block)
        : m_Form(form), m_Scratch(scratch), m_Data{data},
          m_First(block << (bits - 4)), m_Blocks{(std::ptrdiff_t{1} << (bits - 4)) / kLanes} {}

    /// Forward from scratch to data, backward from data to scratch. The data is in natural order or in bit-reversed.
    template <Direction direction>
    [[gnu::flatten]] void Run(bool natural) const {
        for (std::ptrdiff_t group = 0; group < m_Blocks.groups; ++group) {
            LaneComplex<V> x[16];
            if constexpr (direction == kForward) {
                m_Blocks.Turn(m_Scratch, group, x);
                Transform<kForward>(group, x);
                if (natural) {
                    m_Blocks.StoreNatural(x, ReversedGroup(group), m_Data);
                } else {
                    m_Blocks.TurnBack(x, group, m_Data);
                }
            } else {
                if (natural) {
                    m_Blocks.LoadNatural(m_Data, ReversedGroup(group), x);
                } else {
                    m_Blocks.Turn(m_Data, group, x);
                }
                Transform<kBackward>(group, x);
                m_Blocks.TurnBack(x, group, m_Scratch);
            }
        }
    }

private:
    static constexpr int kLanes = kLines<V>;

    std::ptrdiff_t ReversedGroup(std::ptrdiff_t group) const {
        return m_Blocks.groups == 1 ? 0 : m_Form.lists.reversals[group * kLanes];
    }

    /// The triples of `count` adjacent blocks of a pass, the first of which is number count * BlockOf(lane).
    template <int count>
    void GatherTriples(std::ptrdiff_t group, TwiddleTriple<V>* triples) const {
        constexpr int kNumbers = 6 * count;
        V numbers[kNumbers < kLanes ? kLanes : kNumbers];
        for (int first = 0; first < kNumbers; first += kLanes) {
            // The last square overlaps the one before.
            const int from = kNumbers >= kLanes && first + kLanes > kNumbers ? kNumbers - kLanes : first;
            simd::CLARIBOX_VECTOR_CLASS::Unrolled<kLanes>([&](int lane) {
                numbers[from + lane] = simd::CLARIBOX_VECTOR_CLASS::Load<V>(
                    m_Form.triples + (m_First + m_Blocks.BlockOf(lane, group)) * kNumbers + from);
            });
            Transpose(numbers + from);
        }
        for (int k = 0; k < count; ++k) {
            const V* const at = numbers + 6 * k;
            triples[k] = {{at[0], at[1]}, {at[2], at[3]}, {at[4], at[5]}};
        }
    }

    /// The two last passes, lane by lane.
    template <Direction direction>
    void Transform(std::ptrdiff_t group, LaneComplex<V>* x) const {
        if (m_Form.triples == nullptr) {
            const TripleSeries<Beside<V>, T> twiddles = {m_Form.even + 2 * ((1 << kStaticBits) - 16)};
            Passes<direction, kRotation<direction, false>>(x, twiddles, [](LaneComplex<V>*, int) {});
        } else {
            TwiddleTriple<V> whole;
            TwiddleTriple<V> quarters[4];
            GatherTriples<1>(group, &whole);
            GatherTriples<4>(group, quarters);
            Passes<direction, kRotation<direction, true>>(
                x, [&](std::ptrdiff_t) { return whole; },
                [&](LaneComplex<V>* at, int k) {
                    at[1] = Rotate<direction>(at[1], quarters[k].w1.re, quarters[k].w1.im);
                    at[2] = Rotate<direction>(at[2], quarters[k].w2.re, quarters[k].w2.im);
                    at[3] = Rotate<direction>(at[3], quarters[k].w3.re, quarters[k].w3.im);
                });
        }
    }
    template <Direction direction, Rotation rotation, typename Twiddle, typename RotateQuarter>
    static void Passes(LaneComplex<V>* x, Twiddle twiddle, RotateQuarter rotate) {
        if constexpr (direction == kForward) {
            Pass4<direction, kScramble, rotation>(x, x, 4, 1, twiddle);
        }
        for (int k = 0; k < 4; ++k) {
            constexpr int place1 = direction == kForward ? 1 : 2;
            LaneComplex<V>* const at = x + 4 * k;
            LaneComplex<V> y[4] = {at[0], at[place1], at[3 - place1], at[3]};
            if constexpr (rotation == kBefore) {
                rotate(y, k);
            }
            Butterfly4<direction>(y[0], y[1], y[2], y[3]);
            if constexpr (rotation == kAfter) {
                rotate(y, k);
            }
            at[0] = y[0];
            at[3 - place1] = y[1];
            at[place1] = y[2];
            at[3] = y[3];
        }
        if constexpr (direction == kBackward) {
            Pass4<direction, kUnscramble, rotation>(x, x, 4, 1, twiddle);
        }
    }

    const Pow2Form<T>& m_Form;
    LaneComplex<V>* m_Scratch;
    Interleaved<V> m_Data;
    std::ptrdiff_t m_First;
    LaneBlocks<V, 16> m_Blocks;
};

} // namespace dft::CLARIBOX_VECTOR_CLASS
