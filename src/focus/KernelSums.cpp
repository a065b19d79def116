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
    // Coefficient at distance (i, j) from the middle, as 16 bits; 0 for the row that an even count lacks.
    const auto remainder = [&](int i, int j) {
        const std::int32_t base = m_hasBox ? kBoxCoefficient : 0;
        return i <= m_halfRows ? static_cast<std::uint16_t>(kernel.At(m_halfRows + i, m_halfCols + j) - base)
                               : std::uint16_t{0};
    };
    for (int pair = 0; pair < PairCount(); ++pair) {
        for (int j = 0; j <= m_halfCols; ++j) {
            m_coefficients.push_back(remainder(2 * pair, j) | std::uint32_t{remainder(2 * pair + 1, j)} << 16);
        }
    }
    m_pairs.resize(static_cast<std::size_t>(PairStride()) * static_cast<std::size_t>(PairCount()));
}

void MirroredSums::operator()(const RowRing& ring, int y, int x, int count, std::int32_t* sums) {
    const auto rowAt = [&](int row) { return ring.Row(row) + x - m_halfCols; };
    const std::uint8_t* const zeros = rowAt(-1);
    for (int pair = 0; pair < PairCount(); ++pair) {
        MirroredRows rows;
        for (int k = 0; k < 2; ++k) {
            const int i = 2 * pair + k;
            rows.above[k] = i <= m_halfRows ? rowAt(y - i) : zeros;
            rows.below[k] = i <= m_halfRows && i > 0 ? rowAt(y + i) : zeros;
        }
        m_rows.FoldRows(rows, m_pairs.data() + pair * PairStride(), count + 2 * m_halfCols);
    }
    m_rows.SumFolded({m_pairs.data(), PairStride(), PairCount(), m_halfCols, m_coefficients.data(), m_hasBox}, sums,
                     count);
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
