#include "Quotients.h"

#include <algorithm>

namespace focus {

Quotients::Quotients(const QuantisedKernel& kernel, int width, int height, int columns)
    : m_Kernel(kernel), m_Width(width), m_Height(height), m_Reciprocals(static_cast<std::size_t>(columns) + kRowSlack) {
}

void Quotients::Store(const std::int32_t* sums, int x, int y, int count, std::uint8_t* samples) {
    const int firstRow = std::max(0, m_Kernel.RowsAbove() - y);
    const int endRow = std::min(m_Kernel.Rows(), m_Height - y + m_Kernel.RowsAbove());
    const auto firstCol = [this](int at) { return std::clamp(m_Kernel.ColsLeft() - at, 0, m_Kernel.Cols()); };
    const auto endCol = [this](int at) { return std::clamp(m_Width - at + m_Kernel.ColsLeft(), 0, m_Kernel.Cols()); };
    const auto reciprocalAt = [&](int at) {
        return Reciprocal(m_Kernel.Weight(firstRow, endRow, firstCol(at), endCol(at)));
    };
    const bool interior = firstCol(x) == 0 && endCol(x + count - 1) == m_Kernel.Cols();
    const std::array<int, 3> place = {interior ? -1 : x, firstRow, endRow};
    if (place != m_Known) {
        m_Known = place;
        for (int k = 0; k < (interior ? 1 : count); ++k) {
            m_Reciprocals[static_cast<std::size_t>(k)] = reciprocalAt(x + k);
        }
    }
    if (interior) {
        m_Rows.PackQuotientsByOne(sums, m_Reciprocals.front(), samples, count);
    } else {
        m_Rows.PackQuotients(sums, m_Reciprocals.data(), samples, count);
    }
}

double Reciprocal(std::int32_t divisor) {
    return divisor == 0 ? 0.0 : 1.0 / static_cast<double>(divisor) * (1.0 + 0x1p-50);
}

} // namespace focus
