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

    /// Forward: the place of the `size` samples of the next row, and their low and high samples to `out`.
    float* Samples() { return m_Buffer.data() + m_Pass.margin; }
    void FilterSamples(float* out) { FilterBuffer(m_Buffer.data(), out); }

    /// The forward direction from a buffer of size + 2 * margin cells, whose margins receive the extension.
    void FilterBuffer(float* buffer, float* out);

    /// Inverse: the place of the low (0) or high (1) samples of the next row, and their `size` samples to `out`.
    float* Band(int band) { return m_Sequences.Band(band); }
    void FilterBands(float* out);

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

/// Filters columns while their samples come row by row: every output row is a weighted sum of some of the last rows.
/// Forward the rows come in order, inverse in turns of a low and a high one. Working memory: as many rows as an output
/// reaches, about ten where lines are mirrored and all of them where they repeat.
class ColumnFilter {
public:
    /// For rows of `columns` samples.
    ColumnFilter(const Pass& pass, int columns);

    /// The place of the next row, which Take() counts as there. Rows before it are kept as long as any of the outputs
    /// that are not ready yet, and the pair that was ready last, needs them.
    float* NextRow() { return RowAt(m_Taken); }
    void Take() { ++m_Taken; }
    int Taken() const { return m_Taken; }

    /// Whether the rows are there that element k of both outputs needs: low and high forward, even and odd inverse.
    bool IsReady(int k) const { return LastRow(k) < m_Taken; }

    /// Columns begin .. end - 1 of row k of output 0 or 1.
    void Sum(int output, int k, int begin, int end, float* out);

private:
    // Calls work(row) with the number, in the order of arrival, of each row that element k of an output needs.
    template <typename Work>
    void ForEachRow(int output, int k, Work work) const;
    int LastRow(int k) const;
    int ArrivalOf(int number) const;
    float* RowAt(int arrival) { return m_Ring.data() + static_cast<std::size_t>(arrival % m_Rows) * m_Stride; }

    Pass m_Pass;
    // Stands for the row at each place of the sequences: its number, counted from 1, negative where the mirror image
    // changes the sign, 0 for a row of zeros.
    LineSequences<int> m_Numbers;
    int m_Taken = 0;
    int m_Rows = 1; // of the ring; one of zeros follows them
    std::size_t m_Stride;
    std::vector<float> m_Ring;
    std::vector<const float*> m_Sources;
    std::vector<float> m_Weights;
    const LineFunctions& m_Functions = ActiveLineFunctions();
};

} // namespace wavelet
