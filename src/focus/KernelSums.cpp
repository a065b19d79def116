#include "KernelSums.h"

#include <algorithm>

namespace focus {
namespace {

constexpr std::int32_t kBoxCoefficient = 65536;

bool FitsInto16Bits(const QuantisedKernel& kernel, std::int32_t base) {
    for (int i = 0; i < kernel.Rows(); ++i) {
        for (int j = 0; j < kernel.Cols(); ++j) {
            const std::int64_t remainder = std::int64_t{kernel.At(i, j)} - base;
            if (remainder < INT16_MIN || remainder > INT16_MAX) {
                return false;
            }
        }
    }
    return true;
}

} // namespace

bool MirroredSums::Serves(const QuantisedKernel& kernel) {
    return kernel.IsMirrored() && (FitsInto16Bits(kernel, 0) || FitsInto16Bits(kernel, kBoxCoefficient));
}

MirroredSums::MirroredSums(const QuantisedKernel& kernel)
    : m_halfRows(kernel.RowsAbove()), m_halfCols(kernel.ColsLeft()), m_hasBox(!FitsInto16Bits(kernel, 0)) {
    const std::int32_t base = m_hasBox ? kBoxCoefficient : 0;
    const int pairCount = m_halfRows / 2 + 1;
    for (int pair = 0; pair < pairCount; ++pair) {
        for (int j = 0; j <= m_halfCols; ++j) {
            for (const int i : {2 * pair, 2 * pair + 1}) {
                const std::int32_t coefficient = i <= m_halfRows ? kernel.At(m_halfRows + i, m_halfCols + j) - base : 0;
                m_coefficients.push_back(static_cast<std::int16_t>(coefficient));
            }
        }
    }
    const std::size_t columns = static_cast<std::size_t>(kTileColumns + 2 * m_halfCols + kRowSlack);
    m_pairs.resize(2 * columns * static_cast<std::size_t>(pairCount));
    m_columnSums.resize(columns);
    m_box.resize(columns);
}

void MirroredSums::operator()(const RowRing& ring, int y, int x, int count, std::int32_t* sums) {
    const std::uint8_t* const outside = ring.Row(-1) + x - m_halfCols;
    const int columns = count + 2 * m_halfCols;
    const int pairCount = m_halfRows / 2 + 1;
    const int pairStride = 2 * (kTileColumns + 2 * m_halfCols + kRowSlack);
    std::fill_n(m_columnSums.begin(), columns, std::uint16_t{0});
    for (int pair = 0; pair < pairCount; ++pair) {
        MirroredRows rows;
        for (int k = 0; k < 2; ++k) {
            const int i = 2 * pair + k;
            const bool exists = i <= m_halfRows;
            rows.above[k] = exists ? ring.Row(y - i) + x - m_halfCols : outside;
            rows.below[k] = exists && i > 0 ? ring.Row(y + i) + x - m_halfCols : outside;
        }
        m_rows.FoldRows(rows, m_pairs.data() + pair * pairStride, m_columnSums.data(), columns);
    }
    if (m_hasBox) {
        m_rows.BoxSums(m_columnSums.data(), 2 * m_halfCols + 1, m_box.data(), count);
    }
    const FoldedSums folded = {
        m_pairs.data(), pairStride, pairCount, m_halfCols, m_coefficients.data(), m_hasBox ? m_box.data() : nullptr};
    m_rows.SumFolded(folded, sums, count);
}

TapSums::TapSums(const QuantisedKernel& kernel) {
    for (int i = 0; i < kernel.Rows(); ++i) {
        for (int j = 0; j < kernel.Cols(); ++j) {
            if (kernel.At(i, j) != 0) {
                m_places.push_back(
                    {i - kernel.RowsAbove(), j - kernel.ColsLeft(), static_cast<std::uint32_t>(kernel.At(i, j))});
            }
        }
    }
    m_taps.resize(m_places.size());
}

void TapSums::operator()(const RowRing& ring, int y, int x, int count, std::int32_t* sums) {
    std::transform(m_places.begin(), m_places.end(), m_taps.begin(), [&](const Place& place) {
        return Tap{ring.Row(y + place.dy) + x + place.dx, place.coefficient};
    });
    m_rows.SumTaps(m_taps.data(), static_cast<int>(m_taps.size()), sums, count);
}

} // namespace focus
