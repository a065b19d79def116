// How vectors hold the elements of lines, and where these lie in memory. For vector sources only.
//
// Across lines, a vector holds element k of several lines; within a line, consecutive elements of one. Both run the
// same passes: a layout is anything with Load(layout, k), Store(layout, k, x) for vector k, and layout + vectors. The
// simplest is an array of LaneComplex (passes.h).
#pragma once

#include "dft/pow2/passes.h"
#include "simd/Transpose.h"

namespace dft::CLARIBOX_VECTOR_CLASS {

/// Vectors across lines; with a scalar, one line element by element.
template <typename V>
struct AcrossLines {
    using Vector = V;
    using Root = Real<V>;
    static constexpr int kPoints = 1; ///< elements of a line in a vector

    /// Number j of a series that stands in groups of four, `stride` numbers from group to group.
    static Root RootAt(const Real<V>* series, int stride, std::ptrdiff_t j) { return series[j / 4 * stride + j % 4]; }
};

/// Vectors within a line.
template <typename V>
struct WithinLine {
    using Vector = V;
    using Root = V;
    static constexpr int kPoints = kLines<V>;

    static Root RootAt(const Real<V>* series, int stride, std::ptrdiff_t j) {
        return Groups<kPoints>(series + j * kPoints / 4 * stride + j * kPoints % 4, stride);
    }

private:
    template <int count>
    using Part = typename simd::CLARIBOX_VECTOR_CLASS::VectorOf<Real<V>, count>::Type;

    template <int count, int... k>
    static Part<count> Joined(Part<count / 2> a, Part<count / 2> b, simd::CLARIBOX_VECTOR_CLASS::Indices<0, k...>) {
        return __builtin_shufflevector(a, b, k...);
    }
    template <int count>
    static Part<count> Groups(const Real<V>* from, int stride) {
        if constexpr (count <= 4) {
            return simd::CLARIBOX_VECTOR_CLASS::Load<Part<count>>(from);
        } else {
            return Joined<count>(Groups<count / 2>(from, stride), Groups<count / 2>(from + count / 8 * stride, stride),
                                 simd::CLARIBOX_VECTOR_CLASS::Indices<count>{});
        }
    }
};

/// One line as the caller has it, at any address, seen as vectors within it.
template <typename V, typename Number = Real<V>>
struct Interleaved {
    Number* at;

    Interleaved operator+(std::ptrdiff_t vectors) const { return {at + 2 * kLines<V> * vectors}; }
    friend LaneComplex<V> Load(Interleaved from, std::ptrdiff_t k) {
        LaneComplex<V> x;
        simd::CLARIBOX_VECTOR_CLASS::LoadSeparated((from + k).at, x.re, x.im);
        return x;
    }
    friend void Store(Interleaved to, std::ptrdiff_t k, LaneComplex<V> x) {
        simd::CLARIBOX_VECTOR_CLASS::StoreJoined((to + k).at, x.re, x.im);
    }
};

/// Vectors within a line as real parts, then imaginary parts, at any address. A vector takes the space it has in
/// `Interleaved`, so that one layout can replace the other.
template <typename V>
struct Separated {
    Real<V>* at;

    Separated operator+(std::ptrdiff_t vectors) const { return {at + 2 * kLines<V> * vectors}; }
    friend LaneComplex<V> Load(Separated from, std::ptrdiff_t k) {
        const Real<V>* const re = (from + k).at;
        return {simd::CLARIBOX_VECTOR_CLASS::Load<V>(re), simd::CLARIBOX_VECTOR_CLASS::Load<V>(re + kLines<V>)};
    }
    friend void Store(Separated to, std::ptrdiff_t k, LaneComplex<V> x) {
        Real<V>* const re = (to + k).at;
        simd::CLARIBOX_VECTOR_CLASS::Store(re, x.re);
        simd::CLARIBOX_VECTOR_CLASS::Store(re + kLines<V>, x.im);
    }
};

/// As many adjacent columns as V has lanes, read and written where they lie as if they were a batch: row k holds
/// element k of all.
template <typename V>
struct Columns {
    Complex<Real<V>>* base;
    std::ptrdiff_t rowStride; ///< in elements

    Complex<Real<V>>* Row(std::ptrdiff_t k) const { return base + k * rowStride; }
    Columns operator+(std::ptrdiff_t rows) const { return {Row(rows), rowStride}; }
    friend LaneComplex<V> Load(Columns from, std::ptrdiff_t k) {
        if constexpr (kLines<V> == 1) {
            return *from.Row(k);
        } else {
            return Load(Interleaved<V>{&from.Row(k)->re}, 0);
        }
    }
    friend void Store(Columns to, std::ptrdiff_t k, LaneComplex<V> x) {
        if constexpr (kLines<V> == 1) {
            *to.Row(k) = x;
        } else {
            Store(Interleaved<V>{&to.Row(k)->re}, 0, x);
        }
    }
    /// Prefetches row k, to be read or written, into the second-level cache: rows a power of two apart compete for few
    /// sets of the first. Always inlined: g++ 12 drops calls of such a function.
    [[gnu::always_inline]] friend void Prefetch(Columns columns, std::ptrdiff_t k) {
        const auto* const row = reinterpret_cast<const char*>(columns.Row(k));
        for (std::size_t at = 0; at < 2 * sizeof(V); at += 64) {
            __builtin_prefetch(row + at, 0, 2);
        }
    }
};
/// Batches are near enough.
template <typename V>
inline void Prefetch(LaneComplex<V>*, std::ptrdiff_t) {}

/// Columns for a pass that goes through each quarter of them row by row: each row is prefetched eight rows before.
template <typename V>
struct PrefetchedColumns {
    Columns<V> columns;
    std::ptrdiff_t last; ///< row of the array, counted from `columns`

    PrefetchedColumns operator+(std::ptrdiff_t rows) const { return {columns + rows, last - rows}; }
    std::ptrdiff_t Later(std::ptrdiff_t k) const { return k + 8 < last ? k + 8 : last; }
    friend LaneComplex<V> Load(PrefetchedColumns from, std::ptrdiff_t k) {
        Prefetch(from.columns, from.Later(k));
        return Load(from.columns, k);
    }
    friend void Store(PrefetchedColumns to, std::ptrdiff_t k, LaneComplex<V> x) {
        Prefetch(to.columns, to.Later(k));
        Store(to.columns, k, x);
    }
};

} // namespace dft::CLARIBOX_VECTOR_CLASS
