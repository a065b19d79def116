#include "QuantisedKernel.h"

#include <algorithm>
#include <limits>

namespace focus {
namespace {

// Values beyond 32 bits, and NaN, take the processor's own mark for them; C++ leaves their conversion undefined.
std::int32_t TruncateToS32(double value) {
    constexpr double kLimit = 2147483648.0;
    return value > -kLimit - 1.0 && value < kLimit ? static_cast<std::int32_t>(value)
                                                   : std::numeric_limits<std::int32_t>::min();
}

} // namespace

QuantisedKernel::QuantisedKernel(const ChMatrix<float>& kernel)
    : m_Rows(kernel.m_Rows), m_Cols(kernel.m_Cols), m_Coefficients(kernel.Count()) {
    std::transform(kernel.m_Data, kernel.m_Data + kernel.Count(), m_Coefficients.begin(),
                   [](float c) { return TruncateToS32(static_cast<double>(c) * 65536.0); });
    const auto cornersPerRow = static_cast<std::size_t>(m_Cols) + 1;
    m_Corners.assign(cornersPerRow, 0);
    for (int i = 0; i < m_Rows; ++i) {
        std::uint32_t row = 0;
        m_Corners.push_back(0);
        for (int j = 0; j < m_Cols; ++j) {
            row += static_cast<std::uint32_t>(At(i, j));
            m_Corners.push_back(m_Corners[m_Corners.size() - cornersPerRow] + row);
        }
    }
}

Reach QuantisedKernel::NonzeroReach() const {
    Reach reach = {};
    for (int i = 0; i < m_Rows; ++i) {
        for (int j = 0; j < m_Cols; ++j) {
            if (At(i, j) != 0) {
                reach = {std::max(reach.above, RowsAbove() - i), std::max(reach.below, i - RowsAbove()),
                         std::max(reach.left, ColsLeft() - j), std::max(reach.right, j - ColsLeft())};
            }
        }
    }
    return reach;
}

bool QuantisedKernel::IsMirrored() const {
    if (m_Rows % 2 == 0 || m_Cols % 2 == 0) {
        return false;
    }
    for (int i = 0; i < m_Rows; ++i) {
        for (int j = 0; j < m_Cols; ++j) {
            if (At(i, j) != At(m_Rows - 1 - i, j) || At(i, j) != At(i, m_Cols - 1 - j)) {
                return false;
            }
        }
    }
    return true;
}

std::int32_t QuantisedKernel::Weight(int firstRow, int endRow, int firstCol, int endCol) const {
    const auto corner = [this](int row, int col) {
        return m_Corners[static_cast<std::size_t>(row) * (static_cast<std::size_t>(m_Cols) + 1) +
                         static_cast<std::size_t>(col)];
    };
    return static_cast<std::int32_t>(corner(endRow, endCol) - corner(firstRow, endCol) - corner(endRow, firstCol) +
                                     corner(firstRow, firstCol));
}

} // namespace focus
