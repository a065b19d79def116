#include "LevelStreams.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace wavelet {
namespace {

// Columns that are summed up at a time, so that the rows they come from are in the first-level cache for both outputs:
// twelve rows of 2 KiB. Tuned on planes of 512x512 to 4000x3000.
constexpr int kTile = 512;

bool IsOdd(int n) {
    return n % 2 != 0;
}

// Symmetric filters of odd length keep a line mirrored about its end samples, those of even length about the gaps
// behind them; the bands inherit a symmetry of their own at either end (C. M. Brislawn, 1996).
LineEnds EndsOf(const WaveletFilter& lowAnalysis, int size, int extension) {
    const bool oddTaps = IsOdd(lowAnalysis.tapCount);
    const int kind = oddTaps ? 1 : 2;
    return {extension != 0,
            {kind, kind, 1},
            {kind, IsOdd(size) ? 1 : 2, 1},
            {2, IsOdd(size) != oddTaps ? 1 : 2, oddTaps ? 1 : -1}};
}

/// The levels of a plane, the finest first. `passOf(size)` makes the pass over lines of a size.
template <typename PassOf>
std::vector<Level> LevelsOf(int width, int height, int levels, PassOf passOf) {
    std::vector<Level> made;
    made.reserve(static_cast<std::size_t>(std::max(levels, 0)));
    for (int level = 0; level < levels; ++level) {
        made.push_back({width, height, RowFilter(passOf(width)), ColumnFilter(passOf(height), width)});
        width = (width + 1) / 2;
        height = (height + 1) / 2;
    }
    return made;
}

/// Calls work(begin, end) for the tiles of columns first .. last - 1, none of which reaches across `border`.
template <typename Work>
void ForEachTile(int first, int border, int last, Work work) {
    for (const auto& [from, to] : {std::pair(first, border), std::pair(border, last)}) {
        for (int begin = from; begin < to; begin += kTile) {
            work(begin, std::min(begin + kTile, to));
        }
    }
}

} // namespace

Pass ForwardPass(const WaveletTransform& transform, int size, int extension) {
    return {Pass::Direction::Forward, ForwardTerms(*transform.lowAnalysis, *transform.highAnalysis), size,
            transform.margin, EndsOf(*transform.lowAnalysis, size, extension)};
}

Pass InversePass(const WaveletTransform& transform, int size, int extension) {
    return {Pass::Direction::Inverse, InverseTerms(*transform.lowSynthesis, *transform.highSynthesis), size,
            transform.margin, EndsOf(*transform.lowAnalysis, size, extension)};
}

ForwardStream::ForwardStream(const WaveletTransform& transform, float* coefficients, int width, int height, int levels,
                             int extension)
    : m_Coefficients(coefficients), m_Width(width) {
    extension = extension == -1 ? transform.mirrorExtension : extension;
    m_Levels = LevelsOf(width, height, levels, [&](int size) { return ForwardPass(transform, size, extension); });
    for (const Level& level : m_Levels) {
        if ((level.width <= 2 || level.height <= 2) && extension == 1) {
            ReportWarning("Reduce # of transform steps or increase signal size");
            ReportWarning("  or switch to periodic extension");
            ReportError("Low pass subband is too small");
        }
    }
}

float* ForwardStream::NextRow() {
    return m_Levels.empty() ? m_Coefficients + static_cast<std::ptrdiff_t>(m_RowsTaken) * m_Width
                            : m_Levels[0].rows.Samples();
}

void ForwardStream::Take() {
    ++m_RowsTaken;
    if (!m_Levels.empty()) {
        Take(0);
    }
}

void ForwardStream::Take(std::size_t level) {
    Level& at = m_Levels[level];
    at.rows.FilterSamples(at.columns.NextRow());
    at.columns.Take();
    for (; at.next < at.LowRows() && at.columns.IsReady(at.next); ++at.next) {
        StorePair(level, at.next);
        if (level + 1 < m_Levels.size()) {
            Take(level + 1);
        }
    }
}

/// Stores rows k of the low and of the high part. The low samples of the low one are the next level's next row.
void ForwardStream::StorePair(std::size_t level, int k) {
    Level& at = m_Levels[level];
    float* const low = m_Coefficients + static_cast<std::ptrdiff_t>(k) * m_Width;
    float* const high = low + static_cast<std::ptrdiff_t>(at.LowRows()) * m_Width;
    float* const lowest = level + 1 < m_Levels.size() ? m_Levels[level + 1].rows.Samples() : low;
    ForEachTile(0, at.LowColumns(), at.width, [&](int begin, int end) {
        at.columns.Sum(0, k, begin, end, (begin < at.LowColumns() ? lowest : low) + begin);
        if (k < at.height / 2) {
            at.columns.Sum(1, k, begin, end, high + begin);
        }
    });
}

InverseStream::InverseStream(const WaveletTransform& transform, const float* coefficients, int width, int height,
                             int levels, int extension, Shaping shaping)
    : m_Coefficients(coefficients), m_Width(width), m_Shaping(std::move(shaping)) {
    extension = extension == -1 ? transform.mirrorExtension : extension;
    m_Levels = LevelsOf(width, height, levels, [&](int size) { return InversePass(transform, size, extension); });
}

void InverseStream::NextRow(float* out) {
    const int row = m_RowsGiven++;
    if (m_Levels.empty()) {
        CopyPiece(row, 0, m_Width, out);
    } else {
        NextRow(0, out);
    }
}

void InverseStream::NextRow(std::size_t level, float* out) {
    Level& at = m_Levels[level];
    const int k = at.next / 2;
    const int output = at.next++ % 2;
    while (!at.columns.IsReady(k)) {
        TakeRow(level);
    }
    at.columns.Sum(output, k, 0, at.LowColumns(), at.rows.Band(0));
    at.columns.Sum(output, k, at.LowColumns(), at.width, at.rows.Band(1));
    at.rows.FilterBands(out);
}

/// Low and high rows take turns; the low samples of a low row come from the next level.
void InverseStream::TakeRow(std::size_t level) {
    Level& at = m_Levels[level];
    float* const row = at.columns.NextRow();
    const int k = at.columns.Taken() / 2;
    const bool isLow = at.columns.Taken() % 2 == 0;
    const int begin = isLow && level + 1 < m_Levels.size() ? at.LowColumns() : 0;
    if (begin > 0) {
        NextRow(level + 1, row);
    }
    CopyPiece(isLow ? k : at.LowRows() + k, begin, at.width, row + begin);
    at.columns.Take();
}

void InverseStream::CopyPiece(int row, int begin, int end, float* out) const {
    std::copy_n(m_Coefficients + static_cast<std::ptrdiff_t>(row) * m_Width + begin, end - begin, out);
    if (m_Shaping) {
        m_Shaping(row, begin, end, out);
    }
}

} // namespace wavelet
