// The wavelet engine as plain loops over one line at a time, in scatter form, with sums rounded once. Slow and
// obviously correct; the library's own code includes nothing of it.
#pragma once

#include "wavelet/WaveletFilterSet.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace reference {

class WaveletSlow {
public:
    explicit WaveletSlow(const WaveletFilterSet& set)
        : m_Set(set), m_Margin(std::max(set.lowAnalysis->tapCount, set.highAnalysis->tapCount)) {}

    std::vector<float> Forward2D(std::vector<float> plane, int width, int height, int levels, bool mirror) const {
        for (int level = 0; level < levels; ++level) {
            const int w = SizeAt(level, width);
            const int h = SizeAt(level, height);
            OnLines(plane, h, width, w, 1, [&](auto& line) { return ForwardLine(line, w, mirror); });
            OnLines(plane, w, 1, h, width, [&](auto& line) { return ForwardLine(line, h, mirror); });
        }
        return plane;
    }

    std::vector<float> Inverse2D(std::vector<float> plane, int width, int height, int levels, bool mirror) const {
        for (int level = levels - 1; level >= 0; --level) {
            const int w = SizeAt(level, width);
            const int h = SizeAt(level, height);
            OnLines(plane, w, 1, h, width, [&](auto& line) { return InverseLine(line, h, mirror); });
            OnLines(plane, h, width, w, 1, [&](auto& line) { return InverseLine(line, w, mirror); });
        }
        return plane;
    }

    using Line = std::vector<float>; // `size` samples from index Margin() on, with as many cells again on either side

    int Margin() const { return m_Margin; }

    /// Leaves the extension in the margins of `in`.
    Line ForwardLine(Line& in, int size, bool mirror) const {
        const int kind = m_Set.lowAnalysis->tapCount % 2 != 0 ? 1 : 2;
        Extend(in, size, mirror, kind, kind, 1);
        Line out(in.size());
        const int low = (size + 1) / 2;
        for (int i = 0; i < size; ++i) {
            const WaveletFilter& filter = i < low ? *m_Set.lowAnalysis : *m_Set.highAnalysis;
            const int at = m_Margin + filter.firstTap + 2 * (i < low ? i : i - low);
            for (int j = 0; j < filter.tapCount; ++j) {
                Add(out[static_cast<std::size_t>(m_Margin + i)], in[static_cast<std::size_t>(at + j)], filter.taps[j]);
            }
        }
        return out;
    }

    Line InverseLine(const Line& in, int size, bool mirror) const {
        const int low = (size + 1) / 2;
        const bool oddTaps = m_Set.lowAnalysis->tapCount % 2 != 0;
        const bool oddSize = size % 2 != 0;
        Line out(in.size());
        Line scratch(static_cast<std::size_t>(low + 2 * m_Margin));
        std::copy_n(in.begin() + m_Margin, low, scratch.begin() + m_Margin);
        Extend(scratch, low, mirror, oddTaps ? 1 : 2, oddSize ? 1 : 2, 1);
        Scatter(scratch, *m_Set.lowSynthesis, size, out);
        // Nothing is cleared: where there is no high sample at all, the low one and its repetitions stand in for it.
        std::copy_n(in.begin() + m_Margin + low, size - low, scratch.begin() + m_Margin);
        if (oddTaps) {
            Extend(scratch, size - low, mirror, 2, oddSize ? 2 : 1, 1);
        } else {
            Extend(scratch, size - low, mirror, 2, oddSize ? 1 : 2, -1);
        }
        Scatter(scratch, *m_Set.highSynthesis, size, out);
        return out;
    }

private:
    /// Of the low band that a level starts from: a half for each level above, rounded up.
    static int SizeAt(int level, int size) { return (size + (1 << level) - 1) >> level; }

    /// Filters `lines` lines, which start `lineStep` samples apart and hold `size` samples, `step` apart.
    template <typename Filter>
    void OnLines(std::vector<float>& plane, int lines, int lineStep, int size, int step, Filter filter) const {
        Line line(static_cast<std::size_t>(size + 2 * m_Margin));
        for (int start = 0; start < lines * lineStep; start += lineStep) {
            for (int k = 0; k < size; ++k) {
                line[static_cast<std::size_t>(m_Margin + k)] = plane[static_cast<std::size_t>(start + k * step)];
            }
            const Line filtered = filter(line);
            for (int k = 0; k < size; ++k) {
                plane[static_cast<std::size_t>(start + k * step)] = filtered[static_cast<std::size_t>(m_Margin + k)];
            }
        }
    }

    static void Add(float& cell, float sample, float tap) { cell = std::fma(sample, tap, cell); }

    void Scatter(const Line& scratch, const WaveletFilter& filter, int size, Line& out) const {
        const int f = filter.firstTap;
        for (int i = (1 - filter.tapCount - f) / 2; i <= (size - f - 1) / 2; ++i) {
            for (int j = 0; j < filter.tapCount; ++j) {
                Add(out[static_cast<std::size_t>(m_Margin + f + 2 * i + j)],
                    scratch[static_cast<std::size_t>(m_Margin + i)], filter.taps[j]);
            }
        }
    }

    // Cell by cell from one period of the sequence that the repetitions or the mirror images of a line form.
    void Extend(Line& line, int size, bool mirror, int leftKind, int rightKind, int sign) const {
        Line period(line.begin() + m_Margin, line.begin() + m_Margin + size);
        const int lead = mirror && sign == -1 && leftKind == 1 ? 1 : 0;
        if (mirror) {
            period = MirrorPeriod(std::move(period), leftKind, rightKind, sign);
        }
        const int length = static_cast<int>(period.size());
        for (int k = -m_Margin; k < size + m_Margin && length > 0; ++k) {
            const int at = (((k + lead) % length) + length) % length;
            line[static_cast<std::size_t>(m_Margin + k)] = period[static_cast<std::size_t>(at)];
        }
    }

    // [0] line [0] image: the zeros only at an antisymmetric end of kind 1, the image without the samples that an end
    // of kind 1 shares.
    static Line MirrorPeriod(Line line, int leftKind, int rightKind, int sign) {
        line.insert(line.begin(), sign == -1 && leftKind == 1 ? 1u : 0u, 0.0f);
        line.insert(line.end(), sign == -1 && rightKind == 1 ? 1u : 0u, 0.0f);
        const int length = static_cast<int>(line.size());
        for (int i = length - (rightKind == 1 ? 2 : 1); i >= (leftKind == 1 ? 1 : 0); --i) {
            line.push_back(static_cast<float>(sign) * line[static_cast<std::size_t>(i)]);
        }
        return line;
    }

    const WaveletFilterSet& m_Set;
    int m_Margin;
};

} // namespace reference
