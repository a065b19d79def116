// The library's container of two-dimensional numbers: kernels, correlation fields, normal equations.
#pragma once

#include "KernelTable.h"

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

/// A row-major matrix: element (i, j), row i and column j, is `m_Data[i * m_Cols + j]`. Used with float, double and
/// `ChComplex`. The order of the fields is part of the binary interface of every exported function that takes a
/// matrix; the member functions are compiled into the host.
///
/// Nothing is tested or reported: sizes, rectangles and shifts are the caller's to keep in range, and exhausted memory
/// faults at the first store. A size of zero or below makes every loop do nothing.
template <typename T>
class ChMatrix {
public:
    /// An empty matrix: no block, sizes 0.
    ChMatrix() = default;

    /// `rows` by `cols` elements, not cleared.
    ChMatrix(int rows, int cols) { Allocate(rows, cols); }

    /// A deep copy, `m_Print` included.
    ChMatrix(const ChMatrix& other) : m_Print(other.m_Print) {
        Allocate(other.m_Rows, other.m_Cols);
        CopyElements(m_Data, other.m_Data, other.Count());
    }

    /// Takes `m_Print`, frees the own block, and copies the source into a new one.
    ChMatrix& operator=(const ChMatrix& other) {
        if (this != &other) {
            m_Print = other.m_Print;
            Create(other.m_Rows, other.m_Cols);
            CopyElements(m_Data, other.m_Data, other.Count());
        }
        return *this;
    }

    virtual ~ChMatrix() { Free(); }

    /// Frees the old block and allocates `rows` by `cols` undefined elements, also where the size stays the same.
    void Create(int rows, int cols) {
        Free();
        Allocate(rows, cols);
    }

    /// Sets every element to zero.
    void Zero() {
        for (std::size_t k = 0; k < Count(); ++k) {
            m_Data[k] = T{};
        }
    }

    /// Divides every element by the sum of all, taken in double precision in storage order. Elements below
    /// 2^-52 of the largest, NaN included, become exactly 0 though they counted in the sum. The matrix must not be
    /// empty; a sum of zero gives NaN everywhere.
    void Normalize() requires std::same_as<T, float> {
        double sum = 0.0;
        for (std::size_t k = 0; k < Count(); ++k) {
            sum += static_cast<double>(m_Data[k]);
        }
        float largest = m_Data[0];
        for (std::size_t k = 1; k < Count(); ++k) {
            if (m_Data[k] > largest) {
                largest = m_Data[k];
            }
        }
        const double threshold = static_cast<double>(largest) * 0x1p-52; // the machine epsilon of double
        for (std::size_t k = 0; k < Count(); ++k) {
            const double element = static_cast<double>(m_Data[k]);
            m_Data[k] = element >= threshold ? static_cast<float>(element / sum) : 0.0f;
        }
    }

    /// Grows the matrix by `extraRows` rows below and `extraCols` columns to the right, all zero; both must be 0 or
    /// more. `m_Print` goes back to the default.
    void ZeroPad(int extraRows, int extraCols) requires std::same_as<T, float> {
        ChMatrix padded(m_Rows + extraRows, m_Cols + extraCols);
        padded.Zero();
        for (int i = 0; i < m_Rows; ++i) {
            for (int j = 0; j < m_Cols; ++j) {
                padded.At(i, j) = At(i, j);
            }
        }
        *this = padded;
    }

    /// Moves the contents circularly, `dx` columns to the right and `dy` rows down; negative amounts move left and up.
    /// |dx| must not exceed the columns, nor |dy| the rows. Always leaves the elements in a new block, so that pointers
    /// kept from before are stale.
    void CircShift(int dx, int dy) requires std::same_as<T, float> || std::same_as<T, ChComplex> {
        const int left = dx < 0 ? -dx : m_Cols - dx; // columns that end up behind the others
        const int top = dy < 0 ? -dy : m_Rows - dy;
        ChMatrix shifted(*this);
        for (int i = 0; i < m_Rows; ++i) {
            CopyElements(shifted.Row(i), Row(i) + left, Width(m_Cols - left));
            CopyElements(shifted.Row(i) + (m_Cols - left), Row(i), Width(left));
        }
        *this = shifted;
        for (int i = 0; i < m_Rows; ++i) {
            const int source = i < m_Rows - top ? i + top : i - (m_Rows - top);
            CopyElements(shifted.Row(i), Row(source), Width(m_Cols));
        }
        *this = shifted;
    }

    /// Replaces the matrix by its correlation with `kernel`, which is not flipped: same size, zero outside, sums in
    /// double precision rounded once to float. `m_Data` stays where it is.
    void Correlate(const ChMatrix<float>& kernel) requires std::same_as<T, float> {
        ChMatrix result(m_Rows, m_Cols);
        ChMatrix<double> sums(1, m_Cols);
        for (int i = 0; i < m_Rows; ++i) {
            // A row of sums grows together: each takes its terms in the order of the kernel, as one alone would.
            sums.Zero();
            for (int ki = 0; ki < kernel.m_Rows; ++ki) {
                const int y = i - kernel.m_Rows / 2 + ki;
                if (y >= 0 && y < m_Rows) {
                    for (int kj = 0; kj < kernel.m_Cols; ++kj) {
                        AddShiftedRow(sums.m_Data, kernel.At(ki, kj), Row(y), kj - kernel.m_Cols / 2);
                    }
                }
            }
            for (int j = 0; j < m_Cols; ++j) {
                result.At(i, j) = static_cast<float>(sums.m_Data[j]);
            }
        }
        CopyElements(m_Data, result.m_Data, Count());
    }

    /// Keeps columns x0 up to but not including x1 and rows y0 up to but not including y1, a rectangle inside the
    /// matrix. `m_Print` goes back to the default.
    void Crop(int x0, int y0, int x1, int y1) requires std::same_as<T, float> {
        ChMatrix part(y1 - y0, x1 - x0);
        for (int i = 0; i < part.m_Rows; ++i) {
            for (int j = 0; j < part.m_Cols; ++j) {
                part.At(i, j) = At(y0 + i, x0 + j);
            }
        }
        *this = part;
    }

    /// Number of elements; 0 where a size is zero or below.
    std::size_t Count() const { return Width(m_Rows) * Width(m_Cols); }

    T* Row(int i) { return m_Data + static_cast<std::ptrdiff_t>(i) * m_Cols; }
    const T* Row(int i) const { return m_Data + static_cast<std::ptrdiff_t>(i) * m_Cols; }
    T& At(int i, int j) { return Row(i)[j]; }
    const T& At(int i, int j) const { return Row(i)[j]; }

    T* m_Data = nullptr; ///< first element, or null for an empty matrix; a block of `malloc`, owned
    int m_Rows = 0;
    int m_Cols = 0;
    int (*m_Print)(const char*, ...) = &std::printf; ///< carried for the shared layout; nothing calls it

private:
    static std::size_t Width(int size) { return size > 0 ? static_cast<std::size_t>(size) : 0; }

    static void CopyElements(T* destination, const T* source, std::size_t count) {
        constexpr std::size_t largest = UINT32_MAX / sizeof(T); // the slot counts bytes in 32 bits
        while (count > 0) {
            const std::size_t part = std::min(count, largest);
            KernelTable.Copy(destination, source, static_cast<std::uint32_t>(part * sizeof(T)));
            destination += part;
            source += part;
            count -= part;
        }
    }

    /// Adds `weight` times element j + `shift` of `row` to `sums[j]` for every j that finds such an element.
    void AddShiftedRow(double* sums, float weight, const T* row, int shift) const {
        const int end = std::min(m_Cols, m_Cols - shift);
        for (int j = std::max(0, -shift); j < end; ++j) {
            sums[j] += static_cast<double>(weight) * static_cast<double>(row[j + shift]);
        }
    }

    void Allocate(int rows, int cols) {
        m_Rows = rows;
        m_Cols = cols;
        m_Data = static_cast<T*>(std::malloc(Count() * sizeof(T)));
    }

    void Free() {
        std::free(m_Data);
        m_Data = nullptr;
    }
};

/// Makes `destination` the double-precision copy of `source`, keeping its block where the sizes already agree.
inline void ChMatrixToDouble(ChMatrix<double>& destination, ChMatrix<float> source) {
    if (destination.m_Rows != source.m_Rows || destination.m_Cols != source.m_Cols) {
        destination.Create(source.m_Rows, source.m_Cols);
    }
    for (std::size_t k = 0; k < source.Count(); ++k) {
        destination.m_Data[k] = static_cast<double>(source.m_Data[k]);
    }
}
