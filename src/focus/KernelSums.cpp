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

// All but the coefficients.
MirroredKernel LayoutOf(const QuantisedKernel& kernel) {
    MirroredKernel layout{};
    layout.halfRows = kernel.RowsAbove();
    layout.halfCols = kernel.ColsLeft();
    layout.pairCount = layout.halfCols / 2 + 1;
    layout.hasBox = !FitsInto16Bits(kernel, 0);
    const int planes = layout.pairCount + (layout.hasBox ? 1 : 0);
    const int cached = kCachedBytes / (kernel.Rows() * planes * static_cast<int>(sizeof(std::uint32_t)));
    layout.columns = std::clamp(cached / kRowSlack * kRowSlack, kRowSlack, kMostColumns);
    layout.rowStride = std::ptrdiff_t{planes} * layout.columns;
    return layout;
}

// For each row from the middle and each pair of distances from the middle column, less the box's part, as 16 bits; 0
// for the distance that an odd count of them lacks.
std::vector<std::uint32_t> PairedCoefficients(const QuantisedKernel& kernel, const MirroredKernel& layout) {
    const std::int32_t base = layout.hasBox ? kBoxCoefficient : 0;
    const auto remainder = [&](int i, int j) {
        return j <= layout.halfCols
                   ? static_cast<std::uint16_t>(kernel.At(layout.halfRows + i, layout.halfCols + j) - base)
                   : std::uint16_t{0};
    };
    std::vector<std::uint32_t> coefficients;
    for (int i = 0; i <= layout.halfRows; ++i) {
        for (int pair = 0; pair < layout.pairCount; ++pair) {
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
    m_folded.resize(static_cast<std::size_t>(1 + kernel.Rows() - 1 + band.Capacity()) *
                    static_cast<std::size_t>(m_layout.rowStride));
}

void MirroredSums::StartTile(int x, int count) {
    m_count = count;
    m_foldedRows = 0;
    m_nextSource = m_band.Row(m_band.First() - m_layout.halfRows) + x;
    for (int k = 0; k < 2 * m_layout.halfRows; ++k) {
        FoldNextRow();
    }
}

void MirroredSums::FoldNextRow() {
    ++m_foldedRows;
    m_rows.FoldRow(m_layout, m_nextSource, FoldedRow(m_foldedRows), m_count);
    m_nextSource += m_band.Stride();
}

void MirroredSums::SumNextRow(std::int32_t* sums) {
    FoldNextRow();
    m_rows.SumFolded(m_layout, FoldedRow(m_foldedRows - m_layout.halfRows), sums, m_count);
}

TapSums::TapSums(const QuantisedKernel& kernel, const SourceBand& band) : m_band(band) {
    for (int i = 0; i < kernel.Rows(); ++i) {
        for (int j = 0; j < kernel.Cols(); ++j) {
            if (kernel.At(i, j) != 0) {
                const auto rows = static_cast<std::ptrdiff_t>(i) - kernel.RowsAbove();
                m_taps.push_back({rows * static_cast<std::ptrdiff_t>(band.Stride()) + j - kernel.ColsLeft(),
                                  static_cast<std::uint32_t>(kernel.At(i, j))});
            }
        }
    }
}

void TapSums::StartTile(int x, int count) {
    m_count = count;
    m_nextSource = m_band.Row(m_band.First()) + x;
}

void TapSums::SumNextRow(std::int32_t* sums) {
    m_rows.SumTaps(m_nextSource, m_taps.data(), static_cast<int>(m_taps.size()), sums, m_count);
    m_nextSource += m_band.Stride();
}

} // namespace focus
