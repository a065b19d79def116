// One line in vectors along it: how its elements stand in memory, and how short blocks of it are turned so that each
// stands in a lane, several beside each other. For vector sources only.
#pragma once

#include "dft/base/register_transpose.h"
#include "dft/pow2/ways.h"

namespace dft::CLARIBOX_VECTOR_CLASS {

/// Elements in memory as the caller has them, at any address, seen as vectors.
template <typename V, typename Number = Real<V>>
struct Interleaved {
    Number* at;
    Interleaved operator+(std::ptrdiff_t vectors) const { return {at + 2 * kLines<V> * vectors}; }
};
template <typename V, typename Number>
inline LaneComplex<V> Fetch(Interleaved<V, Number> from, std::ptrdiff_t k) {
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

/// Vectors of consecutive elements, all real parts, then all imaginary ones, at any address. A vector takes the same
/// place as in `Interleaved`, so that one form can take the other's place.
template <typename V>
struct Separated {
    Real<V>* at;
    Separated operator+(std::ptrdiff_t vectors) const { return {at + 2 * kLines<V> * vectors}; }
};
template <typename V>
inline LaneComplex<V> Fetch(Separated<V> from, std::ptrdiff_t k) {
    const Real<V>* const at = (from + k).at;
    return {simd::CLARIBOX_VECTOR_CLASS::Load<V>(at), simd::CLARIBOX_VECTOR_CLASS::Load<V>(at + kLines<V>)};
}
template <typename V>
inline void Deposit(Separated<V> to, std::ptrdiff_t k, LaneComplex<V> x) {
    Real<V>* const at = (to + k).at;
    simd::CLARIBOX_VECTOR_CLASS::Store(at, x.re);
    simd::CLARIBOX_VECTOR_CLASS::Store(at + kLines<V>, x.im);
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

/// A line of blocks of 16 or 32 elements, `groups` of them to each lane. A group is one block a lane, lane l having the
/// one at index (l with its bits reversed) * groups + group: one frequency of all of them makes consecutive elements of
/// the spectrum.
template <typename V, int points>
struct LaneBlocks {
    static constexpr int kLanes = kLines<V>;
    static constexpr int kVectors = points / kLanes; ///< in a block

    std::ptrdiff_t groups;

    std::ptrdiff_t BlockOf(int lane, std::ptrdiff_t group) const { return kReversed<kLanes>.of[lane] * groups + group; }

    /// The blocks of a group, from where vectors of the line are to x[point].
    template <typename Line>
    void Turn(Line line, std::ptrdiff_t group, LaneComplex<V>* x) const {
        using simd::CLARIBOX_VECTOR_CLASS::Unrolled;
        for (int part = 0; part < kVectors; ++part) {
            V re[kLanes];
            V im[kLanes];
            Unrolled<kLanes>([&](int lane) {
                const LaneComplex<V> row = Fetch(line, BlockOf(lane, group) * kVectors + part);
                re[lane] = row.re;
                im[lane] = row.im;
            });
            Transpose(re);
            Transpose(im);
            Unrolled<kLanes>([&](int k) { x[part * kLanes + k] = {re[k], im[k]}; });
        }
    }

    /// And back.
    template <typename Line>
    void TurnBack(const LaneComplex<V>* x, std::ptrdiff_t group, Line line) const {
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
                Deposit(line, BlockOf(lane, group) * kVectors + part, LaneComplex<V>{re[lane], im[lane]});
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
            [&](int point) { x[point] = Fetch(line, NaturalVector(point, reversedGroup)); });
    }
    void StoreNatural(const LaneComplex<V>* x, std::ptrdiff_t reversedGroup, Interleaved<V> line) const {
        simd::CLARIBOX_VECTOR_CLASS::Unrolled<points>(
            [&](int point) { Deposit(line, NaturalVector(point, reversedGroup), x[point]); });
    }
};

} // namespace dft::CLARIBOX_VECTOR_CLASS
