// The transform of a plane row by row: what goes in is read once, and what lies between two levels, or between the rows
// and the columns of one, is a few rows in the cache.
//
//     forward   rows in -> along the row -> the last rows -> along the columns -> low row -> the next level
//                                                                             -> high row -> the array of coefficients
//     inverse   the same way back
#pragma once

#include "LineFilters.h"
#include "WaveletTransform.h"

#include <functional>
#include <vector>

namespace wavelet {

/// The passes of a transform over lines of `size` samples. `extension` is 0 for periodic lines.
Pass ForwardPass(const WaveletTransform& transform, int size, int extension);
Pass InversePass(const WaveletTransform& transform, int size, int extension);

/// The filters of one level, which turns rows of `width` samples into (width + 1) / 2 low and width / 2 high ones.
struct Level {
    int width;
    int height;
    RowFilter rows;
    ColumnFilter columns;
    int next = 0; ///< forward: the next pair of rows to come out; inverse: the next row

    int LowColumns() const { return (width + 1) / 2; }
    int LowRows() const { return (height + 1) / 2; }
};

/// WaveletTransform::Forward2D on rows as they come.
class ForwardStream {
public:
    /// Coefficients go to `coefficients`, width * height floats, all of them by the last row. Arguments as those of
    /// Forward2D, whose messages are reported here.
    ForwardStream(const WaveletTransform& transform, float* coefficients, int width, int height, int levels,
                  int extension);

    /// The place of the next row's `width` samples, which Take() takes.
    float* NextRow();
    void Take();

private:
    void Take(std::size_t level);
    void StorePair(std::size_t level, int k);

    float* m_Coefficients;
    int m_Width;
    int m_RowsTaken = 0;
    std::vector<Level> m_Levels;
};

/// WaveletTransform::Inverse2D row by row.
class InverseStream {
public:
    /// Called once for each piece of a row of coefficients, after it was copied and before it is used: columns begin ..
    /// end - 1 of row `row` of the array, of which values[0] is the first.
    using Shaping = std::function<void(int row, int begin, int end, float* values)>;

    /// Arguments as those of Inverse2D; `levels` of 0 or less copy. `coefficients` are read and left alone.
    InverseStream(const WaveletTransform& transform, const float* coefficients, int width, int height, int levels,
                  int extension, Shaping shaping);

    /// Stores the next row of the plane, `width` samples.
    void NextRow(float* out);

private:
    void NextRow(std::size_t level, float* out);
    void TakeRow(std::size_t level);
    void CopyPiece(int row, int begin, int end, float* out) const;

    const float* m_Coefficients;
    int m_Width;
    int m_RowsGiven = 0;
    Shaping m_Shaping;
    std::vector<Level> m_Levels;
};

} // namespace wavelet
