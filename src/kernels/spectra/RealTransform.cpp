#include "kernels/spectra/RealTransform.h"

#include "kernels/spectra/RowPairs.h"

#include <algorithm>

namespace kernels {

RealTransform::RealTransform(int width, int height)
    : m_Width(width), m_Height(height), m_Pairs(std::min(RowColumnTransform::RowsInCache(width), (height + 1) / 2)),
      m_Transform(width, height, width / 2 + 1),
      m_Rows(static_cast<std::size_t>(m_Pairs) * static_cast<std::size_t>(width)),
      m_NoRow(static_cast<std::size_t>(width)), m_NoSpectrum(static_cast<std::size_t>(Columns())) {}

template <typename Work>
void RealTransform::ForEachBlock(Work work) const {
    for (int y = 0; y < m_Height; y += 2 * m_Pairs) {
        work(y, std::min(m_Pairs, (m_Height - y + 1) / 2));
    }
}

template <typename Work>
void RealTransform::ForEachPair(int first, int count, Work work) {
    for (int k = 0; k < count; ++k) {
        const int y = first + 2 * k;
        work(y, y + 1 < m_Height, m_Rows.data() + static_cast<std::ptrdiff_t>(k) * m_Width);
    }
}

void RealTransform::Forward(const float* plane, ChComplex* spectrum) {
    const RowPairs& pairs = ActiveRowPairs();
    std::fill(m_NoRow.begin(), m_NoRow.end(), 0.0f);
    ForEachBlock([&](int first, int count) {
        ForEachPair(first, count, [&](int y, bool isWhole, ChComplex* row) {
            const float* const upper = plane + static_cast<std::ptrdiff_t>(y) * m_Width;
            pairs.Pack(upper, isWhole ? upper + m_Width : m_NoRow.data(), row, m_Width);
        });
        m_Transform.ForwardRows(m_Rows.data(), count);
        ForEachPair(first, count, [&](int y, bool isWhole, ChComplex* row) {
            ChComplex* const upper = spectrum + static_cast<std::ptrdiff_t>(y) * Columns();
            pairs.Separate(row, upper, isWhole ? upper + Columns() : m_NoSpectrum.data(), m_Width);
        });
    });
    m_Transform.ForwardColumns(spectrum);
}

void RealTransform::Backward(ChComplex* spectrum, float* plane) {
    const RowPairs& pairs = ActiveRowPairs();
    m_Transform.BackwardColumns(spectrum);
    std::fill(m_NoSpectrum.begin(), m_NoSpectrum.end(), ChComplex{0.0f, 0.0f});
    ForEachBlock([&](int first, int count) {
        ForEachPair(first, count, [&](int y, bool isWhole, ChComplex* row) {
            const ChComplex* const upper = spectrum + static_cast<std::ptrdiff_t>(y) * Columns();
            pairs.Combine(upper, isWhole ? upper + Columns() : m_NoSpectrum.data(), row, m_Width);
        });
        m_Transform.BackwardRows(m_Rows.data(), count);
        ForEachPair(first, count, [&](int y, bool isWhole, ChComplex* row) {
            float* const upper = plane + static_cast<std::ptrdiff_t>(y) * m_Width;
            pairs.Unpack(row, upper, isWhole ? upper + m_Width : m_NoRow.data(), m_Width);
        });
    });
}

} // namespace kernels
