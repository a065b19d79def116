// The passes of a power-of-two transform, from the whole array down to blocks of a few elements and back. For vector
// sources only.
//
// A line runs through them in three ways, by the same arithmetic: alone element by element, beside other lines
// (Beside<V>, V a scalar or a vector), or alone with vectors along it (Along<V>). Down to 4 * kLines<V> elements a pass
// has whole vectors of consecutive elements; those of the last 16 are the business of pow2_along.h.
//
// Forward transforms without triples are decimated in frequency: butterflies first, then twiddles that depend on the
// element. With triples twiddles come first and depend on the block alone, so that a whole block needs one triple.
// Backward transforms undo the one and the other, step by step.
#pragma once

#include "dft/pow2/pow2_form.h"
#include "dft/pow2/radix_passes.h"
#include "dft/pow2/static_tables.h"
#include "dft/pow2/ways.h"

namespace dft::CLARIBOX_VECTOR_CLASS {

/// Twiddles of one radix-2 pass, or of two such passes in a row, on four elements a quarter of a block apart.
template <typename W>
struct LevelTwiddles {
    Complex<W> first;  ///< of elements 0 and 2
    Complex<W> second; ///< of elements 1 and 3
    Complex<W> lower;  ///< in the pass on halves, of elements 0 and 1
    Complex<W> upper;  ///< and of elements 2 and 3
};

template <Direction direction, Rotation rotation, typename V, typename W>
inline void Butterfly2(LaneComplex<V>& x0, LaneComplex<V>& x1, Complex<W> w) {
    const LaneComplex<V> turned = rotation == kBefore ? Rotate<direction>(x1, w.re, w.im) : x1;
    const LaneComplex<V> difference = x0 - turned;
    x0 = x0 + turned;
    x1 = rotation == kAfter ? Rotate<direction>(difference, w.re, w.im) : difference;
}

/// One radix-2 pass (`levels` 1), or two at once, on the block of 4 * quarter vectors. The order of elements stays.
template <int levels, Direction direction, Rotation rotation, typename In, typename Out, typename Twiddle>
inline void Pass2(In in, Out out, std::ptrdiff_t quarter, std::ptrdiff_t first, std::ptrdiff_t end, Twiddle twiddle) {
    for (std::ptrdiff_t j = first; j < end; ++j) {
        const auto w = twiddle(j);
        auto x0 = Fetch(in, j);
        auto x1 = Fetch(in, j + quarter);
        auto x2 = Fetch(in, j + 2 * quarter);
        auto x3 = Fetch(in, j + 3 * quarter);
        if constexpr (levels == 2 && direction == kBackward) {
            Butterfly2<direction, rotation>(x0, x1, w.lower);
            Butterfly2<direction, rotation>(x2, x3, w.upper);
        }
        Butterfly2<direction, rotation>(x0, x2, w.first);
        Butterfly2<direction, rotation>(x1, x3, w.second);
        if constexpr (levels == 2 && direction == kForward) {
            Butterfly2<direction, rotation>(x0, x1, w.lower);
            Butterfly2<direction, rotation>(x2, x3, w.upper);
        }
        Deposit(out, j, x0);
        Deposit(out, j + quarter, x1);
        Deposit(out, j + 2 * quarter, x2);
        Deposit(out, j + 3 * quarter, x3);
    }
}

/// -i * w: the root a quarter of the circle on.
template <typename W>
inline Complex<W> Turned(Complex<W> w) {
    return {w.im, -w.re};
}

/// The first quarter of the roots of a radix-2 stage.
template <typename T>
struct StageRoots {
    const T* series;
    int stride;
};

template <typename T>
inline StageRoots<T> RootsOfStage(const Pow2Form<T>& form, int bits) {
    const std::ptrdiff_t points = std::ptrdiff_t{1} << bits;
    if (form.stages != nullptr && bits >= kLastStageBits) {
        return {form.stages + ((std::ptrdiff_t{1} << form.log2_length) - points), 8};
    }
    if (bits % 2 != 0) {
        return {form.odd + ((1 << kStaticBits) - 2 * points) / 3, 8};
    }
    return {form.even + 2 * ((1 << kStaticBits) - points), 24};
}

template <typename T>
inline TwiddleTriple<T> TripleOf(const T* triple) {
    return {{triple[0], triple[1]}, {triple[2], triple[3]}, {triple[4], triple[5]}};
}

/// The rotations of a direction: with triples they come before the forward butterflies.
template <Direction direction, bool triples>
inline constexpr Rotation kRotation = (direction == kForward) == triples ? kBefore : kAfter;

template <Direction direction>
inline constexpr Order kOrder = direction == kForward ? kScramble : kUnscramble;

/// One or two radix-2 passes on the block of 2^bits elements that is number `block` of its size.
template <typename Way, int levels, Direction direction, typename T, typename In, typename Out>
inline void RunLevels(const Pow2Form<T>& form, In in, Out out, int bits, std::ptrdiff_t block) {
    const std::ptrdiff_t quarter = (std::ptrdiff_t{1} << (bits - 2)) / Way::kPoints;
    if (form.triples != nullptr) {
        const Complex<T> w = TripleOf(form.triples + block / 2 * 6).w1;
        const Complex<T> whole = block % 2 == 0 ? w : Turned(w);
        const Complex<T> half = TripleOf(form.triples + block * 6).w1;
        const LevelTwiddles<T> twiddles = {whole, whole, half, Turned(half)};
        Pass2<levels, direction, kRotation<direction, true>>(in, out, quarter, 0, quarter,
                                                             [=](std::ptrdiff_t) { return twiddles; });
        return;
    }
    using W = typename Way::Root;
    constexpr Rotation rotation = kRotation<direction, false>;
    const auto root = [](StageRoots<T> roots, std::ptrdiff_t j) {
        return Complex<W>{Way::RootAt(roots.series, roots.stride, j), Way::RootAt(roots.series + 4, roots.stride, j)};
    };
    const StageRoots<T> whole = RootsOfStage(form, bits);
    if constexpr (levels == 1) {
        Pass2<1, direction, rotation>(in, out, quarter, 0, quarter, [=](std::ptrdiff_t j) {
            const Complex<W> w = root(whole, j);
            return LevelTwiddles<W>{w, Turned(w), {}, {}};
        });
    } else {
        const StageRoots<T> half = RootsOfStage(form, bits - 1);
        Pass2<2, direction, rotation>(in, out, quarter, 0, quarter / 2, [=](std::ptrdiff_t j) {
            const Complex<W> w = root(whole, j);
            const Complex<W> inner = root(half, j);
            return LevelTwiddles<W>{w, Turned(w), inner, inner};
        });
        Pass2<2, direction, rotation>(in, out, quarter, quarter / 2, quarter, [=](std::ptrdiff_t j) {
            const Complex<W> w = root(whole, j);
            const Complex<W> inner = Turned(root(half, j - quarter / 2));
            return LevelTwiddles<W>{w, Turned(w), inner, inner};
        });
    }
}

/// A radix-4 pass on `blocks` adjacent blocks of 2^bits elements, the first of which is number `block` of its size.
template <typename Way, Direction direction, typename T, typename In, typename Out>
inline void RunRadix4(const Pow2Form<T>& form, In in, Out out, int bits, std::ptrdiff_t block, std::ptrdiff_t blocks) {
    const std::ptrdiff_t quarter = (std::ptrdiff_t{1} << (bits - 2)) / Way::kPoints;
    constexpr Order order = kOrder<direction>;
    if (form.triples != nullptr) {
        for (std::ptrdiff_t k = 0; k < blocks; ++k) {
            const TwiddleTriple<T> triple = TripleOf(form.triples + (block + k) * 6);
            Pass4<direction, order, kRotation<direction, true>>(in + 4 * quarter * k, out + 4 * quarter * k, quarter, 1,
                                                                [=](std::ptrdiff_t) { return triple; });
        }
        return;
    }
    const TripleSeries<Way, T> level = {form.even + 2 * ((1 << kStaticBits) - (1 << bits))};
    Pass4<direction, order, kRotation<direction, false>>(in, out, quarter, blocks, level);
}

} // namespace dft::CLARIBOX_VECTOR_CLASS
