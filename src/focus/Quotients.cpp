#include "Quotients.h"

#include <algorithm>

namespace focus {

Quotients::Quotients(const QuantisedKernel& kernel, int width, int height, int columns)
    : m_kernel(kernel), m_width(width), m_height(height), m_reciprocals(static_cast<std::size_t>(columns) + kRowSlack) {
}

void Quotients::Store(const std::int32_t* sums, int x, int y, int count, std::uint8_t* samples) {
    const int firstRow = std::max(0, m_kernel.RowsAbove() - y);
    const int endRow = std::min(m_kernel.Rows(), m_height - y + m_kernel.RowsAbove());
    const auto firstCol = [this](int at) { return std::clamp(m_kernel.ColsLeft() - at, 0, m_kernel.Cols()); };
    const auto endCol = [this](int at) { return std::clamp(m_width - at + m_kernel.ColsLeft(), 0, m_kernel.Cols()); };
    const auto reciprocalAt = [&](int at) {
        return Reciprocal(m_kernel.Weight(firstRow, endRow, firstCol(at), endCol(at)));
    };
    const bool interior = firstCol(x) == 0 && endCol(x + count - 1) == m_kernel.Cols();
    const std::array<int, 3> place = {interior ? -1 : x, firstRow, endRow};
    if (place != m_known) {
        m_known = place;
        for (int k = 0; k < (interior ? 1 : count); ++k) {
            m_reciprocals[static_cast<std::size_t>(k)] = reciprocalAt(x + k);
        }
    }
    if (interior) {
        m_rows.PackQuotientsByOne(sums, m_reciprocals.front(), samples, count);
    } else {
        m_rows.PackQuotients(sums, m_reciprocals.data(), samples, count);
    }
}

double Reciprocal(std::int32_t divisor) {
    return divisor == 0 ? 0.0 : 1.0 / static_cast<double>(divisor) * (1.0 + 0x1p-50);
}

} // namespace focus
