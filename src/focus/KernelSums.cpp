#include "KernelSums.h"

#include <algorithm>

namespace focus {
namespace {

constexpr std::int32_t kBoxCoefficient = 65536;

// What one output row needs of the folded rows should leave room in a first-level cache of 32 KiB or more.
constexpr int kCachedBytes = 24 << 10;
constexpr int kMostColumns = 512;

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

int PlaneCount(const MirroredKernel& layout) {
    return layout.pairCount + (layout.hasBox ? 1 : 0);
}

// All but the coefficients.
MirroredKernel LayoutOf(const QuantisedKernel& kernel) {
    MirroredKernel layout{};
    layout.halfRows = kernel.RowsAbove();
    layout.halfCols = kernel.ColsLeft();
    layout.pairCount = layout.halfCols / 2 + 1;
    layout.hasBox = !FitsInto16Bits(kernel, 0);
    const int cached = kCachedBytes / (kernel.Rows() * PlaneCount(layout) * static_cast<int>(sizeof(std::uint32_t)));
    layout.columns = std::clamp(cached / kRowSlack * kRowSlack, kRowSlack, kMostColumns);
    return layout;
}

// For each pair of distances from the middle column and each row from the middle, less the box's part, as 16 bits; 0
// for the distance that an odd count of them lacks.
std::vector<std::uint32_t> PairedCoefficients(const QuantisedKernel& kernel, const MirroredKernel& layout) {
    const std::int32_t base = layout.hasBox ? kBoxCoefficient : 0;
    const auto remainder = [&](int i, int j) {
        return j <= layout.halfCols
                   ? static_cast<std::uint16_t>(kernel.At(layout.halfRows + i, layout.halfCols + j) - base)
                   : std::uint16_t{0};
    };
    std::vector<std::uint32_t> coefficients;
    for (int pair = 0; pair < layout.pairCount; ++pair) {
        for (int i = 0; i <= layout.halfRows; ++i) {
            coefficients.push_back(remainder(i, 2 * pair) | std::uint32_t{remainder(i, 2 * pair + 1)} << 16);
        }
    }
    return coefficients;
}

} // namespace

bool MirroredSums::Serves(const QuantisedKernel& kernel) {
    return kernel.IsMirrored() && (FitsInto16Bits(kernel, 0) || FitsInto16Bits(kernel, kBoxCoefficient));
}

MirroredSums::MirroredSums(const QuantisedKernel& kernel, const SourceBand& band)
    : m_band(band), m_layout(LayoutOf(kernel)) {
    m_coefficients = PairedCoefficients(kernel, m_layout);
    m_layout.coefficients = m_coefficients.data();
    const std::size_t rowSize =
        static_cast<std::size_t>(PlaneCount(m_layout)) * static_cast<std::size_t>(m_layout.columns);
    const auto ringRows = static_cast<std::size_t>(kernel.Rows()) + 2;
    m_upperSums.resize(static_cast<std::size_t>(m_layout.columns));
    m_lowerSums.resize(m_upperSums.size());
    m_ring.resize(ringRows * rowSize);
    for (std::size_t row = 0; row < 2 * ringRows; ++row) {
        m_foldedRows.push_back(m_ring.data() + row % ringRows * rowSize);
    }
}

void MirroredSums::StartTile(int x, int count) {
    m_count = count;
    m_hasLower = false;
    m_nextSource = m_band.Row(m_band.First() - m_layout.halfRows) + x;
    for (int k = 0; k < 2 * m_layout.halfRows; ++k) {
        FoldNextRow();
    }
}

void MirroredSums::FoldNextRow() {
    const std::uint32_t* const before = m_foldedRows[m_last];
    m_last = (m_last + 1) % (m_foldedRows.size() / 2);
    m_rows.FoldRow(m_layout, m_nextSource, before, m_foldedRows[m_last], m_count);
    m_nextSource += m_band.Stride();
}

const std::int32_t* MirroredSums::SumNextRow() {
    m_hasLower = !m_hasLower;
    if (m_hasLower) {
        FoldNextRow();
        FoldNextRow();
        // After the last row of the ring comes the first, the oldest held: the one above those that the kernel covers.
        m_rows.SumFolded(m_layout, m_foldedRows.data() + m_last + 1, m_upperSums.data(), m_lowerSums.data(), m_count);
        return m_upperSums.data();
    }
    return m_lowerSums.data();
}

TapSums::TapSums(const QuantisedKernel& kernel, const SourceBand& band) : m_band(band), m_sums(kMostColumns) {
    int taps = 0;
    for (int i = 0; i < kernel.Rows(); ++i) {
        for (int j = 0; j < kernel.Cols(); ++j) {
            const std::int32_t coefficient = kernel.At(i, j);
            if (coefficient == 0) {
                continue;
            }
            const std::ptrdiff_t offset =
                std::ptrdiff_t{i - kernel.RowsAbove()} * static_cast<std::ptrdiff_t>(band.Stride()) + j -
                kernel.ColsLeft();
            const auto low = static_cast<std::int16_t>(coefficient);
            const auto high = static_cast<std::uint16_t>((std::int64_t{coefficient} - low) >> 16);
            const int side = taps++ % 2;
            if (side == 0) {
                m_pairs.push_back({{offset, offset}, 0, {0, 0}});
            }
            TapPair& pair = m_pairs.back();
            pair.offset[side] = offset;
            pair.low |= std::uint32_t{static_cast<std::uint16_t>(low)} << 16 * side;
            pair.high[side] = high;
        }
    }
}

int TapSums::TileColumns() const {
    return kMostColumns;
}

void TapSums::StartTile(int x, int count) {
    m_count = count;
    m_nextSource = m_band.Row(m_band.First()) + x;
}

const std::int32_t* TapSums::SumNextRow() {
    m_rows.SumTaps(m_nextSource, m_pairs.data(), static_cast<int>(m_pairs.size()), m_sums.data(), m_count);
    m_nextSource += m_band.Stride();
    return m_sums.data();
}

} // namespace focus
