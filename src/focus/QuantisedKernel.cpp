#include "QuantisedKernel.h"

#include <algorithm>
#include <limits>

namespace focus {
namespace {

// Values beyond 32 bits, and NaN, take the processor's own mark for them; C++ leaves their conversion undefined.
std::int32_t TruncateToS32(double value) {
    constexpr double kLimit = 2147483648.0;
    return value > -kLimit - 1.0 && value < kLimit ? static_cast<std::int32_t>(value)
                                                   : std::numeric_limits<std::int32_t>::min();
}

} // namespace

QuantisedKernel::QuantisedKernel(const ChMatrix<float>& kernel)
    : m_rows(kernel.m_Rows), m_cols(kernel.m_Cols), m_coefficients(kernel.Count()) {
    std::transform(kernel.m_Data, kernel.m_Data + kernel.Count(), m_coefficients.begin(),
                   [](float c) { return TruncateToS32(static_cast<double>(c) * 65536.0); });
}

bool QuantisedKernel::IsMirrored() const {
    if (m_rows % 2 == 0 || m_cols % 2 == 0) {
        return false;
    }
    for (int i = 0; i < m_rows; ++i) {
        for (int j = 0; j < m_cols; ++j) {
            if (At(i, j) != At(m_rows - 1 - i, j) || At(i, j) != At(i, m_cols - 1 - j)) {
                return false;
            }
        }
    }
    return true;
}

void QuantisedKernel::FillReciprocals(int firstRow, int lastRow, int width, double* reciprocals) const {
    // sums[j] is the weight of all columns before j.
    std::vector<std::uint32_t> sums(static_cast<std::size_t>(m_cols) + 1, 0);
    for (int j = 0; j < m_cols; ++j) {
        std::uint32_t column = 0;
        for (int i = firstRow; i < lastRow; ++i) {
            column += static_cast<std::uint32_t>(At(i, j));
        }
        sums[static_cast<std::size_t>(j) + 1] = sums[static_cast<std::size_t>(j)] + column;
    }
    const auto reciprocalAt = [&](int x) {
        const int first = std::clamp(ColsLeft() - x, 0, m_cols);
        const int last = std::clamp(width - x + ColsLeft(), 0, m_cols);
        return Reciprocal(
            static_cast<std::int32_t>(sums[static_cast<std::size_t>(last)] - sums[static_cast<std::size_t>(first)]));
    };
    const int interiorBegin = std::min(ColsLeft(), width);
    const int interiorEnd = std::max(interiorBegin, width - ColsLeft());
    for (int x = 0; x < interiorBegin; ++x) {
        reciprocals[x] = reciprocalAt(x);
    }
    if (interiorBegin < interiorEnd) {
        std::fill(reciprocals + interiorBegin, reciprocals + interiorEnd, reciprocalAt(interiorBegin));
    }
    for (int x = interiorEnd; x < width; ++x) {
        reciprocals[x] = reciprocalAt(x);
    }
}

double Reciprocal(std::int32_t divisor) {
    return divisor == 0 ? 0.0 : 1.0 / static_cast<double>(divisor) * (1.0 + 0x1p-50);
}

} // namespace focus
