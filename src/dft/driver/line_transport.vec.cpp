#include "dft/driver/line_transport.h"

#include "dft/base/lane_complex.h"
#include "simd/Transpose.h"

namespace dft::CLARIBOX_VECTOR_CLASS {
namespace {

using namespace simd::CLARIBOX_VECTOR_CLASS;

// The loops take lines by value: a reference would be reread after every store.

template <typename V>
struct Transport {
    using T = Real<V>;
    static constexpr int kLanes = kLines<V>;

    /// Elements first .. last - 1 of lines at any strides.
    static void GatherPlain(Lines<T> lines, std::ptrdiff_t first, std::ptrdiff_t last, T* batch) {
        for (std::ptrdiff_t k = first; k < last; ++k) {
            const Complex<T>* const row = lines.base + k * lines.elementStride;
            T* const element = batch + 2 * kLanes * k;
            for (int j = 0; j < kLanes; ++j) {
                const Complex<T> x = j < lines.count ? row[j * lines.lineStride] : Complex<T>{};
                element[j] = x.re;
                element[kLanes + j] = x.im;
            }
        }
    }
    static void ScatterPlain(const T* batch, Lines<T> lines, std::ptrdiff_t first, std::ptrdiff_t last, T scale) {
        for (std::ptrdiff_t k = first; k < last; ++k) {
            Complex<T>* const row = lines.base + k * lines.elementStride;
            const T* const element = batch + 2 * kLanes * k;
            for (int j = 0; j < lines.count; ++j) {
                row[j * lines.lineStride] = {element[j] * scale, element[kLanes + j] * scale};
            }
        }
    }

#if !defined(CLARIBOX_VECTOR_Portable)

    /// As many elements of a row as a square of numbers takes from it.
    static constexpr std::ptrdiff_t kTile = kLanes / 2;

    /// Prefetch distances, tuned on 1024 to 4096 square planes (Ice Lake): rows of columns, far enough to hide memory
    /// and few enough for rows that map to the same cache sets; and elements of a row.
    static constexpr std::ptrdiff_t kRowsAhead = 8;
    static constexpr std::ptrdiff_t kElementsAhead = 256 / static_cast<std::ptrdiff_t>(sizeof(Complex<T>));

    /// k + ahead, or the last index of a line.
    static std::ptrdiff_t Ahead(const Lines<T>& lines, std::ptrdiff_t k, std::ptrdiff_t ahead) {
        return k + ahead < lines.length ? k + ahead : lines.length - 1;
    }

    /// Prefetches the row of full columns after row k. Always inlined: g++ 12 drops calls of such a function.
    template <int isWrite>
    [[gnu::always_inline]] static void PrefetchRowAhead(const Lines<T>& lines, std::ptrdiff_t k) {
        constexpr std::size_t bytes = 2 * sizeof(V);
        const auto* const row =
            reinterpret_cast<const char*>(lines.base + Ahead(lines, k, kRowsAhead) * lines.elementStride);
        for (std::size_t at = 0; at < bytes; at += 64) {
            __builtin_prefetch(row + at, isWrite);
        }
        __builtin_prefetch(row + bytes - 1, isWrite);
    }

    /// The elements of rows that go by squares, from where row 0 is aligned to a vector: rows that map to the same
    /// cache sets then need each cache line once.
    struct Squares {
        std::ptrdiff_t begin;
        std::ptrdiff_t end;
    };
    static Squares SquaresOf(const Lines<T>& rows) {
        const std::uintptr_t past = reinterpret_cast<std::uintptr_t>(rows.base) % sizeof(V);
        const std::uintptr_t bytes = past % sizeof(Complex<T>) == 0 ? (sizeof(V) - past) % sizeof(V) : 0;
        const auto leading = static_cast<std::ptrdiff_t>(bytes / sizeof(Complex<T>));
        const std::ptrdiff_t begin = leading < rows.length ? leading : rows.length;
        return {begin, begin + (rows.length - begin) / kTile * kTile};
    }

    template <bool isFull>
    static void GatherRows(Lines<T> lines, T* batch) {
        const Squares squares = SquaresOf(lines);
        GatherPlain(lines, 0, squares.begin, batch);
        for (std::ptrdiff_t k = squares.begin; k < squares.end; k += kTile) {
            const std::ptrdiff_t ahead = Ahead(lines, k, kElementsAhead);
            V square[kLanes];
            Unrolled<kLanes>([&](int j) {
                if (isFull || j < lines.count) {
                    const Complex<T>* const line = lines.base + j * lines.lineStride;
                    __builtin_prefetch(line + ahead);
                    square[j] = Load<V>(line + k);
                } else {
                    square[j] = V{};
                }
            });
            Transpose(square);
            Unrolled<kLanes>([&](int j) { Store(batch + (2 * k + j) * kLanes, square[j]); });
        }
        GatherPlain(lines, squares.end, lines.length, batch);
    }

    template <bool isFull>
    static void ScatterRows(const T* batch, Lines<T> lines, T scale) {
        const Squares squares = SquaresOf(lines);
        ScatterPlain(batch, lines, 0, squares.begin, scale);
        for (std::ptrdiff_t k = squares.begin; k < squares.end; k += kTile) {
            const std::ptrdiff_t ahead = Ahead(lines, k, kElementsAhead);
            V square[kLanes];
            Unrolled<kLanes>([&](int j) { square[j] = Load<V>(batch + (2 * k + j) * kLanes) * scale; });
            Transpose(square);
            Unrolled<kLanes>([&](int j) {
                if (isFull || j < lines.count) {
                    Complex<T>* const line = lines.base + j * lines.lineStride;
                    __builtin_prefetch(line + ahead, 1);
                    Store(line + k, square[j]);
                }
            });
        }
        ScatterPlain(batch, lines, squares.end, lines.length, scale);
    }

    /// Full columns, row by row: scatters `done`, gathers `next`, or both.
    template <bool scatters, bool gathers>
    static void MoveColumns(T* batch, Lines<T> done, Lines<T> next, T scale) {
        const std::ptrdiff_t length = scatters ? done.length : next.length;
        for (std::ptrdiff_t k = 0; k < length; ++k) {
            T* const element = batch + 2 * k * kLanes;
            if constexpr (scatters) {
                PrefetchRowAhead<1>(done, k);
            }
            if constexpr (gathers) {
                PrefetchRowAhead<0>(next, k);
            }
            if constexpr (scatters) {
                StoreJoined(done.base + k * done.elementStride, Load<V>(element) * scale,
                            Load<V>(element + kLanes) * scale);
            }
            if constexpr (gathers) {
                V re;
                V im;
                LoadSeparated(next.base + k * next.elementStride, re, im);
                Store(element, re);
                Store(element + kLanes, im);
            }
        }
    }

    static bool AreFullColumns(const Lines<T>& lines) {
        return lines.lineStride == 1 && lines.count == kLanes;
    }

    static void Gather(const Lines<T>& lines, T* batch) {
        if (AreFullColumns(lines)) {
            MoveColumns<false, true>(batch, lines, lines, 1);
        } else if (lines.elementStride == 1) {
            lines.count == kLanes ? GatherRows<true>(lines, batch) : GatherRows<false>(lines, batch);
        } else {
            GatherPlain(lines, 0, lines.length, batch);
        }
    }
    static void Scatter(T* batch, const Lines<T>& lines, T scale) {
        if (AreFullColumns(lines)) {
            MoveColumns<true, false>(batch, lines, lines, scale);
        } else if (lines.elementStride == 1) {
            lines.count == kLanes ? ScatterRows<true>(batch, lines, scale) : ScatterRows<false>(batch, lines, scale);
        } else {
            ScatterPlain(batch, lines, 0, lines.length, scale);
        }
    }
    static void Exchange(T* batch, const Lines<T>& done, const Lines<T>& next, T scale) {
        if (AreFullColumns(done) && AreFullColumns(next) && done.length == next.length) {
            return MoveColumns<true, true>(batch, done, next, scale);
        }
        Scatter(batch, done, scale);
        Gather(next, batch);
    }

#else

    // A batch is one line.
    static void Gather(const Lines<T>& lines, T* batch) {
        GatherPlain(lines, 0, lines.length, batch);
    }
    static void Scatter(T* batch, const Lines<T>& lines, T scale) {
        ScatterPlain(batch, lines, 0, lines.length, scale);
    }
    static void Exchange(T* batch, const Lines<T>& done, const Lines<T>& next, T scale) {
        Scatter(batch, done, scale);
        Gather(next, batch);
    }

#endif

    static constexpr LineTransport<T> kKernels = {Gather, Scatter, Exchange};
};

} // namespace

const LineTransport<float> kLineTransportSingle = Transport<BatchSingle>::kKernels;
const LineTransport<double> kLineTransportDouble = Transport<BatchDouble>::kKernels;

} // namespace dft::CLARIBOX_VECTOR_CLASS
