#include "Quotients.h"

#include <algorithm>
#include <utility>

namespace focus {

Quotients::Quotients(const QuantisedKernel& kernel, int width, int height, int step, int samples)
    : m_Kernel(kernel), m_Width(width), m_Height(height), m_Step(step),
      m_Reciprocals(static_cast<std::size_t>(samples) + kRowSlack) {}

void Quotients::Store(const std::int32_t* sums, int x, int y, int count, std::uint8_t* samples) {
    const int firstRow = std::max(0, m_Kernel.RowsAbove() - y);
    const int endRow = std::min(m_Kernel.Rows(), m_Height - y + m_Kernel.RowsAbove());
    const auto firstCol = [this](int at) { return std::clamp(m_Kernel.ColsLeft() - at, 0, m_Kernel.Cols()); };
    const auto endCol = [this](int at) { return std::clamp(m_Width - at + m_Kernel.ColsLeft(), 0, m_Kernel.Cols()); };
    const int first = x / m_Step;
    const int last = (x + count - 1) / m_Step;
    const bool interior = firstCol(first) == 0 && endCol(last) == m_Kernel.Cols();
    const std::array<int, 3> place = {interior ? -1 : x, firstRow, endRow};
    if (place != m_Known) {
        m_Known = place;
        std::pair<int, int> columns = {-1, -1};
        double reciprocal = 0.0;
        for (int k = 0; k < (interior ? 1 : count); ++k) {
            const int at = (x + k) / m_Step;
            if (columns != std::pair(firstCol(at), endCol(at))) { // away from the edges most are the same
                columns = {firstCol(at), endCol(at)};
                reciprocal = Reciprocal(m_Kernel.Weight(firstRow, endRow, columns.first, columns.second));
            }
            m_Reciprocals[static_cast<std::size_t>(k)] = reciprocal;
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
