// One line with vectors along it. For vector sources only.
//
// Passes work on vectors of consecutive elements, all real parts, then all imaginary ones, in a scratch array. The
// blocks of 16 elements that are left are then taken kLines<V> at a time, turned so that each stands in a lane, and run
// beside each other. They lie far apart, in such a way that one frequency of all of them makes consecutive elements of
// the spectrum.
#pragma once

#include "dft/driver/register_transpose.h"
#include "dft/pow2/pow2_split.h"

namespace dft::CLARIBOX_VECTOR_CLASS {

/// Elements in memory as the caller has them, at any address, seen as vectors.
template <typename V>
struct Interleaved {
    Real<V>* at;
    Interleaved operator+(std::ptrdiff_t vectors) const { return {at + 2 * kLines<V> * vectors}; }
};
template <typename V>
inline LaneComplex<V> Fetch(Interleaved<V> from, std::ptrdiff_t k) {
    const Real<V>* const at = (from + k).at;
    return Separate(simd::CLARIBOX_VECTOR_CLASS::Load<V>(at), simd::CLARIBOX_VECTOR_CLASS::Load<V>(at + kLines<V>),
                    simd::CLARIBOX_VECTOR_CLASS::Indices<kLines<V>>{});
}
template <typename V>
inline void Deposit(Interleaved<V> to, std::ptrdiff_t k, LaneComplex<V> x) {
    V a;
    V b;
    Join(x, a, b, simd::CLARIBOX_VECTOR_CLASS::Indices<kLines<V>>{});
    Real<V>* const at = (to + k).at;
    simd::CLARIBOX_VECTOR_CLASS::Store(at, a);
    simd::CLARIBOX_VECTOR_CLASS::Store(at + kLines<V>, b);
}

/// The numbers below a power of two with their bits reversed.
template <int count>
struct ReversedNumbers {
    int of[count];
    constexpr ReversedNumbers() : of{} {
        for (int k = 1; k < count; ++k) {
            of[k] = of[k / 2] / 2 + k % 2 * (count / 2);
        }
    }
};
template <int count>
inline constexpr ReversedNumbers<count> kReversed;

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
        : m_Form(form), m_Scratch(scratch), m_Data(data), m_Block(block << (bits - 4)),
          m_Groups((std::ptrdiff_t{1} << (bits - 4)) / kLanes) {}

    /// Forward from scratch to data, backward from data to scratch. The data is in natural order or in bit-reversed.
    template <Direction direction>
    [[gnu::flatten]] void Run(bool natural) const {
        for (std::ptrdiff_t group = 0; group < m_Groups; ++group) {
            LaneComplex<V> x[16];
            if constexpr (direction == kForward) {
                Turn(group, x, [this](std::ptrdiff_t k) { return m_Scratch[k]; });
                Transform<kForward>(group, x);
                if (natural) {
                    StoreNatural(group, x);
                } else {
                    TurnBack(group, x, [this](std::ptrdiff_t k, LaneComplex<V> y) { Deposit(Data(), k, y); });
                }
            } else {
                if (natural) {
                    LoadNatural(group, x);
                } else {
                    Turn(group, x, [this](std::ptrdiff_t k) { return Fetch(Data(), k); });
                }
                Transform<kBackward>(group, x);
                TurnBack(group, x, [this](std::ptrdiff_t k, LaneComplex<V> y) { m_Scratch[k] = y; });
            }
        }
    }

private:
    static constexpr int kLanes = kLines<V>;
    static constexpr int kVectors = 16 / kLanes; ///< in a block

    Interleaved<V> Data() const { return {m_Data}; }

    /// The block in a lane, counted from the first one.
    std::ptrdiff_t BlockOf(int lane, std::ptrdiff_t group) const {
        return kReversed<kLanes>.of[lane] * m_Groups + group;
    }

    template <typename Load>
    void Turn(std::ptrdiff_t group, LaneComplex<V>* x, Load load) const {
        using simd::CLARIBOX_VECTOR_CLASS::Unrolled;
        for (int part = 0; part < kVectors; ++part) {
            V re[kLanes];
            V im[kLanes];
            Unrolled<kLanes>([&](int lane) {
                const LaneComplex<V> row = load(BlockOf(lane, group) * kVectors + part);
                re[lane] = row.re;
                im[lane] = row.im;
            });
            Transpose(re);
            Transpose(im);
            Unrolled<kLanes>([&](int k) { x[part * kLanes + k] = {re[k], im[k]}; });
        }
    }
    template <typename Store>
    void TurnBack(std::ptrdiff_t group, const LaneComplex<V>* x, Store store) const {
        using simd::CLARIBOX_VECTOR_CLASS::Unrolled;
        for (int part = 0; part < kVectors; ++part) {
            V re[kLanes];
            V im[kLanes];
            Unrolled<kLanes>([&](int k) {
                re[k] = x[part * kLanes + k].re;
                im[k] = x[part * kLanes + k].im;
            });
            Transpose(re);
            Transpose(im);
            Unrolled<kLanes>([&](int lane) {
                store(BlockOf(lane, group) * kVectors + part, LaneComplex<V>{re[lane], im[lane]});
            });
        }
    }

    /// Where the lanes' frequencies of one place of a block stand in natural order.
    Interleaved<V> NaturalElements(std::ptrdiff_t group, int place) const {
        const std::ptrdiff_t reversedGroup = m_Groups == 1 ? 0 : m_Form.lists.reversals[group * kLanes];
        return Data() + (kReversed<16>.of[place] * m_Groups + reversedGroup);
    }
    void StoreNatural(std::ptrdiff_t group, const LaneComplex<V>* x) const {
        simd::CLARIBOX_VECTOR_CLASS::Unrolled<16>(
            [&](int place) { Deposit(NaturalElements(group, place), 0, x[place]); });
    }
    void LoadNatural(std::ptrdiff_t group, LaneComplex<V>* x) const {
        simd::CLARIBOX_VECTOR_CLASS::Unrolled<16>(
            [&](int place) { x[place] = Fetch(NaturalElements(group, place), 0); });
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
                    m_Form.triples + (m_Block + BlockOf(lane, group)) * kNumbers + from);
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
            const GroupsOfFour<T> twiddles = {m_Form.even + 2 * ((1 << kStaticBits) - 16)};
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
    T* m_Data;
    std::ptrdiff_t m_Block;
    std::ptrdiff_t m_Groups;
};

} // namespace dft::CLARIBOX_VECTOR_CLASS
