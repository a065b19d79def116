#include "LineFilters.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

namespace wavelet {
namespace {

constexpr std::size_t kLineFloats = 16; // floats in a cache line

std::size_t LargestTermCount(const Polyphase& terms) {
    return std::max(terms[0].size(), terms[1].size());
}

} // namespace

RowFilter::RowFilter(const Pass& pass)
    : m_Pass(pass), m_Sequences(pass.size, pass.margin, pass.ends),
      m_Buffer(static_cast<std::size_t>(pass.size + 2 * pass.margin)), m_Even(static_cast<std::size_t>(pass.Low())),
      m_Odd(static_cast<std::size_t>(pass.Low())), m_Sources(LargestTermCount(pass.terms)),
      m_Weights(LargestTermCount(pass.terms)) {}

void RowFilter::FilterBuffer(float* buffer, float* out) {
    m_Sequences.TakeSamples(buffer);
    Sum(0, out, m_Pass.Low());
    Sum(1, out + m_Pass.Low(), m_Pass.High());
}

void RowFilter::FilterBands(float* out) {
    m_Sequences.ExtendBands();
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

void RowFilter::Sum(int output, float* out, int count) {
    const std::vector<Term>& terms = m_Pass.terms[static_cast<std::size_t>(output)];
    for (std::size_t t = 0; t < terms.size(); ++t) {
        m_Sources[t] = m_Sequences.At(terms[t].input, terms[t].shift);
        m_Weights[t] = terms[t].weight;
    }
    m_Functions.WeightedSum(m_Sources.data(), m_Weights.data(), static_cast<int>(terms.size()), out, count);
}

ColumnFilter::ColumnFilter(const Pass& pass, int columns)
    : m_Pass(pass), m_Numbers(pass.size, pass.margin, pass.ends),
      m_Stride((static_cast<std::size_t>(columns) / kLineFloats + 2) * kLineFloats),
      m_Sources(LargestTermCount(pass.terms)), m_Weights(LargestTermCount(pass.terms)) {
    if (pass.direction == Pass::Direction::Forward) {
        std::vector<int> numbers(static_cast<std::size_t>(pass.size + 2 * pass.margin));
        std::iota(numbers.begin() + pass.margin, numbers.end() - pass.margin, 1);
        m_Numbers.TakeSamples(numbers.data());
    } else {
        std::iota(m_Numbers.Band(0), m_Numbers.Band(0) + pass.Low(), 1);
        std::iota(m_Numbers.Band(1), m_Numbers.Band(1) + pass.High(), pass.Low() + 1);
        m_Numbers.ExtendBands();
    }
    int last = 0;
    for (int k = 0; k < pass.Low(); ++k) {
        last = std::max(last, LastRow(k));
        for (const int output : {0, 1}) {
            ForEachRow(output, k, [&](int row) { m_Rows = std::max(m_Rows, last - row + 1); });
        }
    }
    m_Ring.resize((static_cast<std::size_t>(m_Rows) + 1) * m_Stride);
}

int ColumnFilter::ArrivalOf(int number) const {
    const int row = number - 1;
    if (m_Pass.direction == Pass::Direction::Forward) {
        return row;
    }
    return row < m_Pass.Low() ? 2 * row : 2 * (row - m_Pass.Low()) + 1;
}

template <typename Work>
void ColumnFilter::ForEachRow(int output, int k, Work work) const {
    for (const Term& term : m_Pass.terms[static_cast<std::size_t>(output)]) {
        const int number = *m_Numbers.At(term.input, term.shift + k);
        if (number != 0) {
            work(ArrivalOf(std::abs(number)));
        }
    }
}

int ColumnFilter::LastRow(int k) const {
    int last = 0;
    for (const int output : {0, 1}) {
        if (output == 0 || k < m_Pass.High()) {
            ForEachRow(output, k, [&](int row) { last = std::max(last, row); });
        }
    }
    return last;
}

void ColumnFilter::Sum(int output, int k, int begin, int end, float* out) {
    const std::vector<Term>& terms = m_Pass.terms[static_cast<std::size_t>(output)];
    for (std::size_t t = 0; t < terms.size(); ++t) {
        const int number = *m_Numbers.At(terms[t].input, terms[t].shift + k);
        const float* const row =
            number == 0 ? m_Ring.data() + m_Ring.size() - m_Stride : RowAt(ArrivalOf(std::abs(number)));
        m_Sources[t] = row + begin;
        m_Weights[t] = number < 0 ? -terms[t].weight : terms[t].weight;
    }
    m_Functions.WeightedSum(m_Sources.data(), m_Weights.data(), static_cast<int>(terms.size()), out, end - begin);
}

} // namespace wavelet
