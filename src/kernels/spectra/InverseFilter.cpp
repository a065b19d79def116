#include "kernels/spectra/InverseFilter.h"

#include "claribox/ChFunctions.h"
#include "kernels/numbers/RoundToFloat.h"
#include "kernels/spectra/PictureTransform.h"
#include "kernels/spectra/SpectrumPasses.h"

#include <algorithm>
#include <cstddef>

namespace kernels {

InverseFilter::InverseFilter(int width, int height)
    : m_Width(width), m_Height(height), m_Block(RowColumnTransform::RowsInCache(width)), m_Transform(width, height),
      m_Work(ElementCount(width, height), 256) {}

void InverseFilter::Take(const unsigned char* row) {
    const auto rowOf = [this](int y) { return m_Work.m_Spectrum + static_cast<std::ptrdiff_t>(y) * m_Width; };
    KernelTable.ExpandU8ToComplex(row, rowOf(m_Taken), static_cast<std::uint32_t>(m_Width));
    ++m_Taken;
    if (m_Taken % m_Block == 0 || m_Taken == m_Height) {
        const int first = (m_Taken - 1) / m_Block * m_Block;
        m_Transform.ForwardRows(rowOf(first), m_Taken - first);
    }
}

void InverseFilter::Restore(const ChComplex* otf, unsigned char* plane) {
    const std::uint32_t count = ElementCount(m_Width, m_Height);
    m_Transform.ForwardColumns(m_Work.m_Spectrum);
    // The whole normalisation of the pair of transforms stands between them. SSCAL would take a pass over memory of its
    // own: its rounding, after that of the product, happens in the same pass, and the bytes are the same.
    const float scale = RoundToFloat(1.0 / count);
    for (int y = 0; y < m_Height; y += m_Block) {
        const int rows = std::min(m_Block, m_Height - y);
        const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(y) * m_Width;
        ActiveSpectrumPasses().MultiplyAndScale(otf + at, m_Work.m_Spectrum + at,
                                                static_cast<std::size_t>(rows) * static_cast<std::size_t>(m_Width),
                                                scale);
        m_Transform.BackwardRows(m_Work.m_Spectrum + at, rows);
    }
    m_Transform.BackwardColumns(m_Work.m_Spectrum);
    // One call for the whole plane: the members treat the last elements of a call in ways of their own.
    KernelTable.PackComplexToU8(m_Work.m_Spectrum, plane, count);
    m_Taken = 0;
}

} // namespace kernels

void ChInverseFilter(unsigned char* plane, int width, int height, DFT_Buffer& otf) {
    if (width <= 0 || height <= 0) {
        return;
    }
    kernels::InverseFilter filter(width, height);
    for (int y = 0; y < height; ++y) {
        filter.Take(plane + static_cast<std::ptrdiff_t>(y) * width);
    }
    filter.Restore(otf.m_Spectrum, plane);
}
