#include "dft/driver/line_transport.h"

#include "dft/base/lane_complex.h"
#include "simd/Transpose.h"

namespace dft::CLARIBOX_VECTOR_CLASS {
namespace {

using namespace simd::CLARIBOX_VECTOR_CLASS;

// The loops take the lines by value: through a reference they would be read anew after every store.

/// Elements first .. last - 1 of lines at any strides.
template <typename V>
void GatherPlain(Lines<Real<V>> lines, std::ptrdiff_t first, std::ptrdiff_t last, Real<V>* batch) {
    constexpr int lanes = kLines<V>;
    for (std::ptrdiff_t k = first; k < last; ++k) {
        const Complex<Real<V>>* const row = lines.base + k * lines.elementStride;
        Real<V>* const element = batch + 2 * lanes * k;
        for (int j = 0; j < lanes; ++j) {
            const Complex<Real<V>> x = j < lines.count ? row[j * lines.lineStride] : Complex<Real<V>>{};
            element[j] = x.re;
            element[lanes + j] = x.im;
        }
    }
}
template <typename V>
void ScatterPlain(const Real<V>* batch, Lines<Real<V>> lines, std::ptrdiff_t first, std::ptrdiff_t last,
                  Real<V> scale) {
    constexpr int lanes = kLines<V>;
    for (std::ptrdiff_t k = first; k < last; ++k) {
        Complex<Real<V>>* const row = lines.base + k * lines.elementStride;
        const Real<V>* const element = batch + 2 * lanes * k;
        for (int j = 0; j < lines.count; ++j) {
            row[j * lines.lineStride] = {element[j] * scale, element[lanes + j] * scale};
        }
    }
}

#if !defined(CLARIBOX_VECTOR_Portable)

/// As many elements of a row as a square of numbers takes from it.
template <typename V>
constexpr std::ptrdiff_t kTile = kLines<V> / 2;

/// How far ahead memory is prefetched: rows of columns, far enough to hide the memory and few enough for arrays whose
/// rows all fall on the same few places of a cache; and elements of a row.
constexpr std::ptrdiff_t kRowsAhead = 8;
template <typename V>
constexpr std::ptrdiff_t kElementsAhead = 256 / static_cast<std::ptrdiff_t>(sizeof(Complex<Real<V>>));

/// k + ahead, or the last index of a line.
template <typename R>
inline std::ptrdiff_t Ahead(const Lines<R>& lines, std::ptrdiff_t k, std::ptrdiff_t ahead) {
    return k + ahead < lines.length ? k + ahead : lines.length - 1;
}

/// Prefetches the row of full columns that comes after row k. Always inlined: g++ 12 drops calls of a function that
/// does nothing else.
template <int isWrite, typename V>
[[gnu::always_inline]] inline void PrefetchRowAhead(const Lines<Real<V>>& lines, std::ptrdiff_t k) {
    constexpr std::size_t bytes = 2 * sizeof(V);
    const auto* const row =
        reinterpret_cast<const char*>(lines.base + Ahead(lines, k, kRowsAhead) * lines.elementStride);
    for (std::size_t at = 0; at < bytes; at += 64) {
        __builtin_prefetch(row + at, isWrite);
    }
    __builtin_prefetch(row + bytes - 1, isWrite);
}

/// The elements of rows that go by squares. They start where row 0 starts a vector: rows that all lie on the same few
/// places of a cache then need each cache line once.
struct Squares {
    std::ptrdiff_t begin;
    std::ptrdiff_t end;
};
template <typename V>
Squares SquaresOf(const Lines<Real<V>>& rows) {
    const std::uintptr_t past = reinterpret_cast<std::uintptr_t>(rows.base) % sizeof(V);
    const std::uintptr_t bytes = past % sizeof(Complex<Real<V>>) == 0 ? (sizeof(V) - past) % sizeof(V) : 0;
    const auto leading = static_cast<std::ptrdiff_t>(bytes / sizeof(Complex<Real<V>>));
    const std::ptrdiff_t begin = leading < rows.length ? leading : rows.length;
    return {begin, begin + (rows.length - begin) / kTile<V> * kTile<V>};
}

template <typename V, bool isFull>
void GatherRows(Lines<Real<V>> lines, Real<V>* batch) {
    const Squares squares = SquaresOf<V>(lines);
    GatherPlain<V>(lines, 0, squares.begin, batch);
    for (std::ptrdiff_t k = squares.begin; k < squares.end; k += kTile<V>) {
        const std::ptrdiff_t ahead = Ahead(lines, k, kElementsAhead<V>);
        V square[kLines<V>];
        Unrolled<kLines<V>>([&](int j) {
            if (isFull || j < lines.count) {
                const Complex<Real<V>>* const line = lines.base + j * lines.lineStride;
                __builtin_prefetch(line + ahead);
                square[j] = Load<V>(line + k);
            } else {
                square[j] = V{};
            }
        });
        Transpose(square);
        Unrolled<kLines<V>>([&](int j) { Store(batch + (2 * k + j) * kLines<V>, square[j]); });
    }
    GatherPlain<V>(lines, squares.end, lines.length, batch);
}

template <typename V, bool isFull>
void ScatterRows(const Real<V>* batch, Lines<Real<V>> lines, Real<V> scale) {
    const Squares squares = SquaresOf<V>(lines);
    ScatterPlain<V>(batch, lines, 0, squares.begin, scale);
    for (std::ptrdiff_t k = squares.begin; k < squares.end; k += kTile<V>) {
        const std::ptrdiff_t ahead = Ahead(lines, k, kElementsAhead<V>);
        V square[kLines<V>];
        Unrolled<kLines<V>>([&](int j) { square[j] = Load<V>(batch + (2 * k + j) * kLines<V>) * scale; });
        Transpose(square);
        Unrolled<kLines<V>>([&](int j) {
            if (isFull || j < lines.count) {
                Complex<Real<V>>* const line = lines.base + j * lines.lineStride;
                __builtin_prefetch(line + ahead, 1);
                Store(line + k, square[j]);
            }
        });
    }
    ScatterPlain<V>(batch, lines, squares.end, lines.length, scale);
}

template <typename V>
inline void GatherRowOfColumns(const Complex<Real<V>>* row, Real<V>* element) {
    V re;
    V im;
    LoadSeparated(row, re, im);
    Store(element, re);
    Store(element + kLines<V>, im);
}
template <typename V>
inline void ScatterRowOfColumns(const Real<V>* element, Complex<Real<V>>* row, Real<V> scale) {
    StoreJoined(row, Load<V>(element) * scale, Load<V>(element + kLines<V>) * scale);
}

template <typename V>
void GatherColumns(Lines<Real<V>> lines, Real<V>* batch) {
    for (std::ptrdiff_t k = 0; k < lines.length; ++k) {
        PrefetchRowAhead<0, V>(lines, k);
        GatherRowOfColumns<V>(lines.base + k * lines.elementStride, batch + 2 * k * kLines<V>);
    }
}

template <typename V>
void ScatterColumns(const Real<V>* batch, Lines<Real<V>> lines, Real<V> scale) {
    for (std::ptrdiff_t k = 0; k < lines.length; ++k) {
        PrefetchRowAhead<1, V>(lines, k);
        ScatterRowOfColumns<V>(batch + 2 * k * kLines<V>, lines.base + k * lines.elementStride, scale);
    }
}

template <typename V>
void ExchangeColumns(Real<V>* batch, Lines<Real<V>> done, Lines<Real<V>> next, Real<V> scale) {
    for (std::ptrdiff_t k = 0; k < done.length; ++k) {
        PrefetchRowAhead<1, V>(done, k);
        PrefetchRowAhead<0, V>(next, k);
        Real<V>* const element = batch + 2 * k * kLines<V>;
        ScatterRowOfColumns<V>(element, done.base + k * done.elementStride, scale);
        GatherRowOfColumns<V>(next.base + k * next.elementStride, element);
    }
}

template <typename V>
bool AreFullColumns(const Lines<Real<V>>& lines) {
    return lines.lineStride == 1 && lines.count == kLines<V>;
}

template <typename V>
void GatherLines(const Lines<Real<V>>& lines, Real<V>* batch) {
    const bool isFull = lines.count == kLines<V>;
    if (AreFullColumns<V>(lines)) {
        GatherColumns<V>(lines, batch);
    } else if (lines.elementStride == 1) {
        isFull ? GatherRows<V, true>(lines, batch) : GatherRows<V, false>(lines, batch);
    } else {
        GatherPlain<V>(lines, 0, lines.length, batch);
    }
}

template <typename V>
void ScatterLines(const Real<V>* batch, const Lines<Real<V>>& lines, Real<V> scale) {
    const bool isFull = lines.count == kLines<V>;
    if (AreFullColumns<V>(lines)) {
        ScatterColumns<V>(batch, lines, scale);
    } else if (lines.elementStride == 1) {
        isFull ? ScatterRows<V, true>(batch, lines, scale) : ScatterRows<V, false>(batch, lines, scale);
    } else {
        ScatterPlain<V>(batch, lines, 0, lines.length, scale);
    }
}

template <typename V>
void ExchangeLines(Real<V>* batch, const Lines<Real<V>>& done, const Lines<Real<V>>& next, Real<V> scale) {
    if (AreFullColumns<V>(done) && AreFullColumns<V>(next) && done.length == next.length) {
        return ExchangeColumns<V>(batch, done, next, scale);
    }
    ScatterLines<V>(batch, done, scale);
    GatherLines<V>(next, batch);
}

#else

// A batch is one line.
template <typename V>
void GatherLines(const Lines<Real<V>>& lines, Real<V>* batch) {
    GatherPlain<V>(lines, 0, lines.length, batch);
}
template <typename V>
void ScatterLines(const Real<V>* batch, const Lines<Real<V>>& lines, Real<V> scale) {
    ScatterPlain<V>(batch, lines, 0, lines.length, scale);
}
template <typename V>
void ExchangeLines(Real<V>* batch, const Lines<Real<V>>& done, const Lines<Real<V>>& next, Real<V> scale) {
    ScatterLines<V>(batch, done, scale);
    GatherLines<V>(next, batch);
}

#endif

} // namespace

const LineTransport<float> kLineTransportSingle = {GatherLines<BatchSingle>, ScatterLines<BatchSingle>,
                                                   ExchangeLines<BatchSingle>};
const LineTransport<double> kLineTransportDouble = {GatherLines<BatchDouble>, ScatterLines<BatchDouble>,
                                                    ExchangeLines<BatchDouble>};

} // namespace dft::CLARIBOX_VECTOR_CLASS
