#include "LineFilters.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

namespace wavelet {
namespace {

constexpr std::size_t kColumnStep = 16; // floats in a cache line

std::size_t LargestTermCount(const Polyphase& terms) {
    return std::max(terms[0].size(), terms[1].size());
}

} // namespace

RowFilter::RowFilter(const Pass& pass)
    : m_Pass(pass), m_Sequences(pass.size, pass.margin, pass.ends),
      m_Buffer(static_cast<std::size_t>(pass.size + 2 * pass.margin)), m_Even(static_cast<std::size_t>(pass.Low())),
      m_Odd(static_cast<std::size_t>(pass.Low())), m_Sources(LargestTermCount(pass.terms)),
      m_Weights(LargestTermCount(pass.terms)) {}

void RowFilter::Filter(const float* in, float* out) {
    if (m_Pass.direction == Pass::Direction::Forward) {
        std::copy_n(in, m_Pass.size, m_Buffer.data() + m_Pass.margin);
        FilterBuffer(m_Buffer.data(), out);
        return;
    }
    m_Sequences.TakeBands(in);
    Sum(0, m_Even.data(), m_Pass.Low());
    Sum(1, m_Odd.data(), m_Pass.High());
    for (int k = 0; k < m_Pass.High(); ++k) {
        out[2 * k] = m_Even[static_cast<std::size_t>(k)];
        out[2 * k + 1] = m_Odd[static_cast<std::size_t>(k)];
    }
    if (m_Pass.size % 2 != 0) {
        out[m_Pass.size - 1] = m_Even.back();
    }
}

void RowFilter::FilterBuffer(float* buffer, float* out) {
    m_Sequences.TakeSamples(buffer);
    Sum(0, out, m_Pass.Low());
    Sum(1, out + m_Pass.Low(), m_Pass.High());
}

void RowFilter::Sum(int output, float* out, int count) {
    const std::vector<Term>& terms = m_Pass.terms[static_cast<std::size_t>(output)];
    for (std::size_t t = 0; t < terms.size(); ++t) {
        m_Sources[t] = m_Sequences.At(terms[t].input, terms[t].shift);
        m_Weights[t] = terms[t].weight;
    }
    m_Functions.WeightedSum(m_Sources.data(), m_Weights.data(), static_cast<int>(terms.size()), out, count);
}

ColumnFilter::ColumnFilter(const Pass& pass, int columns)
    : m_Pass(pass), m_Columns(columns), m_Rows(pass.size, pass.margin, pass.ends),
      m_Sources(LargestTermCount(pass.terms)), m_Weights(LargestTermCount(pass.terms)) {
    const auto rows = static_cast<std::size_t>(pass.size) + 1;
    const std::size_t wanted = (static_cast<std::size_t>(columns) + kColumnStep - 1) / kColumnStep;
    const std::size_t fitting = kStripBytes / (rows * sizeof(float) * kColumnStep);
    m_StripColumns = std::max(std::size_t{1}, std::min(wanted, fitting)) * kColumnStep;
    m_Strip.resize(rows * m_StripColumns);
    if (pass.direction == Pass::Direction::Forward) {
        std::vector<int> numbers(static_cast<std::size_t>(pass.size + 2 * pass.margin));
        std::iota(numbers.begin() + pass.margin, numbers.end() - pass.margin, 1);
        m_Rows.TakeSamples(numbers.data());
    } else {
        std::vector<int> numbers(static_cast<std::size_t>(pass.size));
        std::iota(numbers.begin(), numbers.end(), 1);
        m_Rows.TakeBands(numbers.data());
    }
}

void ColumnFilter::Filter(const float* source, float* out, std::ptrdiff_t stride) {
    const int step = static_cast<int>(m_StripColumns);
    for (int x = 0; x < m_Columns; x += step) {
        const int columns = std::min(step, m_Columns - x);
        for (int y = 0; y < m_Pass.size; ++y) {
            std::copy_n(source + y * stride + x, columns,
                        m_Strip.data() + static_cast<std::size_t>(y + 1) * m_StripColumns);
        }
        for (const int output : {0, 1}) {
            const int outputs = output == 0 ? m_Pass.Low() : m_Pass.High();
            for (int k = 0; k < outputs; ++k) {
                const int y = m_Pass.direction == Pass::Direction::Forward ? output * m_Pass.Low() + k : 2 * k + output;
                SumRow(output, k, out + y * stride + x, columns);
            }
        }
    }
}

void ColumnFilter::SumRow(int output, int k, float* out, int count) {
    const std::vector<Term>& terms = m_Pass.terms[static_cast<std::size_t>(output)];
    for (std::size_t t = 0; t < terms.size(); ++t) {
        const int number = *m_Rows.At(terms[t].input, terms[t].shift + k);
        m_Sources[t] = m_Strip.data() + static_cast<std::size_t>(std::abs(number)) * m_StripColumns;
        m_Weights[t] = number < 0 ? -terms[t].weight : terms[t].weight;
    }
    m_Functions.WeightedSum(m_Sources.data(), m_Weights.data(), static_cast<int>(terms.size()), out, count);
}

} // namespace wavelet
