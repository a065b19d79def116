// Adjacent columns of an array, read and written where they lie as if they were a batch. For vector sources only.
#pragma once

#include "dft/pow2/lane_blocks.h"

namespace dft::CLARIBOX_VECTOR_CLASS {

/// As many columns as V has lanes; element k of all is a piece of row k.
template <typename V>
struct Columns {
    Complex<Real<V>>* base;
    std::ptrdiff_t rowStride; ///< in elements

    Complex<Real<V>>* Row(std::ptrdiff_t k) const { return base + k * rowStride; }
    Columns operator+(std::ptrdiff_t rows) const { return {Row(rows), rowStride}; }
};
template <typename V>
inline LaneComplex<V> Fetch(Columns<V> from, std::ptrdiff_t k) {
    if constexpr (kLines<V> == 1) {
        return *from.Row(k);
    } else {
        return Fetch(Interleaved<V>{&from.Row(k)->re}, 0);
    }
}
template <typename V>
inline void Deposit(Columns<V> to, std::ptrdiff_t k, LaneComplex<V> x) {
    if constexpr (kLines<V> == 1) {
        *to.Row(k) = x;
    } else {
        Deposit(Interleaved<V>{&to.Row(k)->re}, 0, x);
    }
}

/// Starts to bring row k, which will be read or written, into the second-level cache: rows that are a power of two
/// apart compete for few places of the first-level one. Always inlined: g++ 12 drops calls of a function that does
/// nothing else.
template <typename V>
[[gnu::always_inline]] inline void Announce(Columns<V> columns, std::ptrdiff_t k) {
    const auto* const row = reinterpret_cast<const char*>(columns.Row(k));
    for (std::size_t at = 0; at < 2 * sizeof(V); at += 64) {
        __builtin_prefetch(row + at, 0, 2);
    }
}
/// Batches are near enough.
template <typename V>
inline void Announce(LaneComplex<V>*, std::ptrdiff_t) {}

/// Columns for a pass that goes through each quarter of them row by row.
template <typename V>
struct ColumnsInTurn {
    Columns<V> columns;
    std::ptrdiff_t last; ///< row of the array, counted from `columns`

    ColumnsInTurn operator+(std::ptrdiff_t rows) const { return {columns + rows, last - rows}; }
    /// The row to announce at row k.
    std::ptrdiff_t After(std::ptrdiff_t k) const {
        constexpr std::ptrdiff_t kAhead = 8;
        return k + kAhead < last ? k + kAhead : last;
    }
};
template <typename V>
inline LaneComplex<V> Fetch(ColumnsInTurn<V> from, std::ptrdiff_t k) {
    Announce(from.columns, from.After(k));
    return Fetch(from.columns, k);
}
template <typename V>
inline void Deposit(ColumnsInTurn<V> to, std::ptrdiff_t k, LaneComplex<V> x) {
    Announce(to.columns, to.After(k));
    Deposit(to.columns, k, x);
}

} // namespace dft::CLARIBOX_VECTOR_CLASS
