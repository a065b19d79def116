// One level's filters along the rows and along the columns of a plane, forward and inverse.
#pragma once

#include "LineSequences.h"
#include "Polyphase.h"
#include "WeightedSums.h"

#include <cstddef>
#include <vector>

namespace wavelet {

/// A pass over lines of `size` samples: its terms, and how far and in what way lines are continued.
struct Pass {
    enum class Direction { Forward, Inverse };

    Direction direction;
    Polyphase terms;
    int size;
    int margin;
    LineEnds ends;

    int Low() const { return (size + 1) / 2; }
    int High() const { return size / 2; }
};

/// Filters one row after another. Working memory: a few lines.
class RowFilter {
public:
    explicit RowFilter(const Pass& pass);

    /// Filters `size` samples from `in` to `out`, which may be the same.
    void Filter(const float* in, float* out);

    /// The forward direction from a buffer of size + 2 * margin cells, whose margins receive the extension.
    void FilterBuffer(float* buffer, float* out);

private:
    void Sum(int output, float* out, int count);

    Pass m_Pass;
    LineSequences<float> m_Sequences;
    std::vector<float> m_Buffer;
    std::vector<float> m_Even;
    std::vector<float> m_Odd;
    std::vector<const float*> m_Sources;
    std::vector<float> m_Weights;
    const LineFunctions& m_Functions = ActiveLineFunctions();
};

/// Filters all columns of a plane in strips: the rows of a strip are copied, and every output row is a weighted sum of
/// some of them. Working memory: one strip, at most kStripBytes or 16 columns.
class ColumnFilter {
public:
    static constexpr std::size_t kStripBytes = std::size_t{512} << 10;

    ColumnFilter(const Pass& pass, int columns);

    /// Filters columns 0 .. columns - 1. Source row y, of size rows, is source + y * stride; the output, which may be
    /// the same plane, likewise.
    void Filter(const float* source, float* out, std::ptrdiff_t stride);

private:
    void SumRow(int output, int k, float* out, int count);

    Pass m_Pass;
    int m_Columns;
    // Stands for the source row at each place of the sequences: its number, counted from 1, negative where the mirror
    // image changes the sign, 0 for a row of zeros.
    LineSequences<int> m_Rows;
    std::size_t m_StripColumns;
    std::vector<float> m_Strip; // row numbers 0 .. size
    std::vector<const float*> m_Sources;
    std::vector<float> m_Weights;
    const LineFunctions& m_Functions = ActiveLineFunctions();
};

} // namespace wavelet
