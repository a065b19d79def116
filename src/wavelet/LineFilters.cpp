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
    : m_pass(pass), m_sequences(pass.size, pass.margin, pass.ends),
      m_buffer(static_cast<std::size_t>(pass.size + 2 * pass.margin)), m_even(static_cast<std::size_t>(pass.Low())),
      m_odd(static_cast<std::size_t>(pass.Low())), m_sources(LargestTermCount(pass.terms)),
      m_weights(LargestTermCount(pass.terms)) {}

void RowFilter::Filter(const float* in, float* out) {
    if (m_pass.direction == Pass::Direction::Forward) {
        std::copy_n(in, m_pass.size, m_buffer.data() + m_pass.margin);
        FilterBuffer(m_buffer.data(), out);
        return;
    }
    m_sequences.TakeBands(in);
    Sum(0, m_even.data(), m_pass.Low());
    Sum(1, m_odd.data(), m_pass.High());
    for (int k = 0; k < m_pass.High(); ++k) {
        out[2 * k] = m_even[static_cast<std::size_t>(k)];
        out[2 * k + 1] = m_odd[static_cast<std::size_t>(k)];
    }
    if (m_pass.size % 2 != 0) {
        out[m_pass.size - 1] = m_even.back();
    }
}

void RowFilter::FilterBuffer(float* buffer, float* out) {
    m_sequences.TakeSamples(buffer);
    Sum(0, out, m_pass.Low());
    Sum(1, out + m_pass.Low(), m_pass.High());
}

void RowFilter::Sum(int output, float* out, int count) {
    const std::vector<Term>& terms = m_pass.terms[static_cast<std::size_t>(output)];
    for (std::size_t t = 0; t < terms.size(); ++t) {
        m_sources[t] = m_sequences.At(terms[t].input, terms[t].shift);
        m_weights[t] = terms[t].weight;
    }
    m_functions.WeightedSum(m_sources.data(), m_weights.data(), static_cast<int>(terms.size()), out, count);
}

ColumnFilter::ColumnFilter(const Pass& pass, int columns)
    : m_pass(pass), m_columns(columns), m_rows(pass.size, pass.margin, pass.ends),
      m_sources(LargestTermCount(pass.terms)), m_weights(LargestTermCount(pass.terms)) {
    const auto rows = static_cast<std::size_t>(pass.size) + 1;
    const std::size_t wanted = (static_cast<std::size_t>(columns) + kColumnStep - 1) / kColumnStep;
    const std::size_t fitting = kStripBytes / (rows * sizeof(float) * kColumnStep);
    m_stripColumns = std::max(std::size_t{1}, std::min(wanted, fitting)) * kColumnStep;
    m_strip.resize(rows * m_stripColumns);
    if (pass.direction == Pass::Direction::Forward) {
        std::vector<int> numbers(static_cast<std::size_t>(pass.size + 2 * pass.margin));
        std::iota(numbers.begin() + pass.margin, numbers.end() - pass.margin, 1);
        m_rows.TakeSamples(numbers.data());
    } else {
        std::vector<int> numbers(static_cast<std::size_t>(pass.size));
        std::iota(numbers.begin(), numbers.end(), 1);
        m_rows.TakeBands(numbers.data());
    }
}

void ColumnFilter::Filter(const float* source, float* out, std::ptrdiff_t stride) {
    const int step = static_cast<int>(m_stripColumns);
    for (int x = 0; x < m_columns; x += step) {
        const int columns = std::min(step, m_columns - x);
        for (int y = 0; y < m_pass.size; ++y) {
            std::copy_n(source + y * stride + x, columns,
                        m_strip.data() + static_cast<std::size_t>(y + 1) * m_stripColumns);
        }
        for (const int output : {0, 1}) {
            const int outputs = output == 0 ? m_pass.Low() : m_pass.High();
            for (int k = 0; k < outputs; ++k) {
                const int y = m_pass.direction == Pass::Direction::Forward ? output * m_pass.Low() + k : 2 * k + output;
                SumRow(output, k, out + y * stride + x, columns);
            }
        }
    }
}

void ColumnFilter::SumRow(int output, int k, float* out, int count) {
    const std::vector<Term>& terms = m_pass.terms[static_cast<std::size_t>(output)];
    for (std::size_t t = 0; t < terms.size(); ++t) {
        const int number = *m_rows.At(terms[t].input, terms[t].shift + k);
        m_sources[t] = m_strip.data() + static_cast<std::size_t>(std::abs(number)) * m_stripColumns;
        m_weights[t] = number < 0 ? -terms[t].weight : terms[t].weight;
    }
    m_functions.WeightedSum(m_sources.data(), m_weights.data(), static_cast<int>(terms.size()), out, count);
}

} // namespace wavelet
