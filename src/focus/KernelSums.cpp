#include "KernelSums.h"

#include <algorithm>

namespace focus {
namespace {

constexpr std::int32_t kBoxCoefficient = 65536;

// What one output row needs of the folded rows should leave room in a first-level cache of 32 KiB or more.
constexpr int kCachedBytes = 24 << 10;
constexpr int kMostSamples = 512;

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

// Everything but the coefficients.
MirroredKernel LayoutOf(const QuantisedKernel& kernel, int step) {
    MirroredKernel layout{};
    layout.halfRows = kernel.RowsAbove();
    layout.halfCols = kernel.ColsLeft();
    layout.step = step;
    layout.pairCount = layout.halfCols / 2 + 1;
    layout.hasBox = !FitsInto16Bits(kernel, 0);
    const int cached = kCachedBytes / (kernel.Rows() * PlaneCount(layout) * static_cast<int>(sizeof(std::uint32_t)));
    layout.samples = std::clamp(cached / kRowSlack * kRowSlack, kRowSlack, kMostSamples);
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
    : m_Band(band), m_Layout(LayoutOf(kernel, band.Step())) {
    m_Coefficients = PairedCoefficients(kernel, m_Layout);
    m_Layout.coefficients = m_Coefficients.data();
    const std::size_t rowSize =
        static_cast<std::size_t>(PlaneCount(m_Layout)) * static_cast<std::size_t>(m_Layout.samples);
    const auto ringRows = static_cast<std::size_t>(kernel.Rows()) + 2;
    m_UpperSums.resize(static_cast<std::size_t>(m_Layout.samples));
    m_LowerSums.resize(m_UpperSums.size());
    m_Ring.resize(ringRows * rowSize);
    for (std::size_t row = 0; row < 2 * ringRows; ++row) {
        m_FoldedRows.push_back(m_Ring.data() + row % ringRows * rowSize);
    }
}

void MirroredSums::StartTile(int x, int count) {
    m_Count = count;
    m_HasLower = false;
    m_NextSource = m_Band.Row(m_Band.First() - m_Layout.halfRows) + x;
    for (int k = 0; k < 2 * m_Layout.halfRows; ++k) {
        FoldNextRow();
    }
}

void MirroredSums::FoldNextRow() {
    const std::uint32_t* const before = m_FoldedRows[m_Last];
    m_Last = (m_Last + 1) % (m_FoldedRows.size() / 2);
    m_Rows.FoldRow(m_Layout, m_NextSource, before, m_FoldedRows[m_Last], m_Count);
    m_NextSource += m_Band.Stride();
}

const std::int32_t* MirroredSums::SumNextRow() {
    m_HasLower = !m_HasLower;
    if (m_HasLower) {
        FoldNextRow();
        FoldNextRow();
        // After the last row of the ring comes the first, the oldest held: the one above those that the kernel covers.
        m_Rows.SumFolded(m_Layout, m_FoldedRows.data() + m_Last + 1, m_UpperSums.data(), m_LowerSums.data(), m_Count);
        return m_UpperSums.data();
    }
    return m_LowerSums.data();
}

TapSums::TapSums(const QuantisedKernel& kernel, const SourceBand& band) : m_Band(band), m_Sums(kMostSamples) {
    int taps = 0;
    for (int i = 0; i < kernel.Rows(); ++i) {
        for (int j = 0; j < kernel.Cols(); ++j) {
            const std::int32_t coefficient = kernel.At(i, j);
            if (coefficient == 0) {
                continue;
            }
            const std::ptrdiff_t offset =
                std::ptrdiff_t{i - kernel.RowsAbove()} * static_cast<std::ptrdiff_t>(band.Stride()) +
                std::ptrdiff_t{j - kernel.ColsLeft()} * band.Step();
            const auto low = static_cast<std::int16_t>(coefficient);
            const auto high = static_cast<std::uint16_t>((std::int64_t{coefficient} - low) >> 16);
            const int side = taps++ % 2;
            if (side == 0) {
                m_Pairs.push_back({{offset, offset}, 0, {0, 0}});
            }
            TapPair& pair = m_Pairs.back();
            pair.offset[side] = offset;
            pair.low |= std::uint32_t{static_cast<std::uint16_t>(low)} << 16 * side;
            pair.high[side] = high;
        }
    }
}

int TapSums::TileSamples() const {
    return kMostSamples;
}

void TapSums::StartTile(int x, int count) {
    m_Count = count;
    m_NextSource = m_Band.Row(m_Band.First()) + x;
}

const std::int32_t* TapSums::SumNextRow() {
    m_Rows.SumTaps(m_NextSource, m_Pairs.data(), static_cast<int>(m_Pairs.size()), m_Sums.data(), m_Count);
    m_NextSource += m_Band.Stride();
    return m_Sums.data();
}

} // namespace focus
