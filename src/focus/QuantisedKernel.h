// A kernel in 16.16 fixed point, as the spatial filter uses it.
#pragma once

#include <claribox/ChMatrix.h>

#include <cstdint>
#include <vector>

namespace focus {

/// How far a kernel reaches from the pixel under it, in rows and columns, each 0 or more.
struct Reach {
    int above;
    int below;
    int left;
    int right;

    int Rows() const { return above + 1 + below; }
    int Cols() const { return left + 1 + right; }
};

/// Integer coefficients of a kernel, row after row: each is 65536 times the float, truncated toward zero. Their sum
/// is the divisor of the filter, so that a kernel needs no normalisation. All sums wrap at 32 bits.
class QuantisedKernel {
public:
    explicit QuantisedKernel(const ChMatrix<float>& kernel);

    int Rows() const { return m_Rows; }
    int Cols() const { return m_Cols; }

    /// Rows above and columns left of the pixel under the kernel; an even side reaches one less below or right.
    int RowsAbove() const { return m_Rows / 2; }
    int ColsLeft() const { return m_Cols / 2; }

    std::int32_t At(int row, int col) const {
        return m_Coefficients[static_cast<std::size_t>(row) * static_cast<std::size_t>(m_Cols) +
                              static_cast<std::size_t>(col)];
    }

    /// As far as its sides, and as far as its coefficients are not zero: those of a motion line are on one side.
    Reach FullReach() const { return {RowsAbove(), Rows() - 1 - RowsAbove(), ColsLeft(), Cols() - 1 - ColsLeft()}; }
    Reach NonzeroReach() const;

    /// True if both sides are odd and the kernel equals its mirror images left to right and top to bottom.
    bool IsMirrored() const;

    /// The sum of the coefficients in rows `firstRow` up to but not including `endRow`, and columns likewise.
    std::int32_t Weight(int firstRow, int endRow, int firstCol, int endCol) const;

private:
    int m_Rows;
    int m_Cols;
    std::vector<std::int32_t> m_Coefficients;
    std::vector<std::uint32_t> m_Corners; ///< one row and column more: weights of all rows above and columns left
};

} // namespace focus
