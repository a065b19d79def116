// A line of one level as two sequences at half rate, continued beyond its ends: what a polyphase filter reads.
#pragma once

#include "Extension.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace wavelet {

/// How a line goes on beyond its ends: repeated, or mirrored with the kinds of the line itself in the forward
/// direction and of its low and high samples in the inverse.
struct LineEnds {
    bool mirrored;
    MirrorEnds line;
    MirrorEnds low;
    MirrorEnds high;
};

template <typename T>
void Extend(T* buffer, int size, int margin, bool mirrored, const MirrorEnds& ends) {
    if (mirrored) {
        ExtendMirrored(buffer, size, margin, ends);
    } else {
        ExtendRepeated(buffer, size, margin);
    }
}

/// Two sequences of at least size / 2 + 1 elements with margins; T is float for samples, int for row numbers.
template <typename T>
class LineSequences {
public:
    LineSequences(int size, int margin, const LineEnds& ends) : m_size(size), m_margin(margin), m_ends(ends) {
        for (std::vector<T>& sequence : m_sequences) {
            sequence.resize(static_cast<std::size_t>((size + 1) / 2 + 2 * margin));
        }
    }

    /// Takes the even and the odd samples of a buffer of size + 2 * margin cells, whose margins it fills first.
    void TakeSamples(T* buffer) {
        Extend(buffer, m_size, m_margin, m_ends.mirrored, m_ends.line);
        const int before = m_margin / 2;
        const T* const samples = buffer + m_margin - 2 * before;
        const int count = before + (m_size + m_margin) / 2;
        m_origin = before;
        T* const even = m_sequences[0].data();
        T* const odd = m_sequences[1].data();
        for (int k = 0; k < count; ++k) {
            even[k] = samples[2 * k];
            odd[k] = samples[2 * k + 1];
        }
    }

    /// Takes (size + 1) / 2 low samples and the size / 2 high ones behind them. A periodic line of one sample has no
    /// high one, and its low one stands in: required (the rows 1 wide and 1 high of tests/wavelet pin it).
    void TakeBands(const T* samples) {
        const int low = (m_size + 1) / 2;
        m_origin = m_margin;
        std::copy_n(samples, low, m_sequences[0].data() + m_margin);
        std::copy_n(samples + low, m_size - low, m_sequences[1].data() + m_margin);
        Extend(m_sequences[0].data(), low, m_margin, m_ends.mirrored, m_ends.low);
        if (m_size == 1 && !m_ends.mirrored) {
            m_sequences[1] = m_sequences[0];
        } else {
            Extend(m_sequences[1].data(), m_size - low, m_margin, m_ends.mirrored, m_ends.high);
        }
    }

    /// Element `k` of a sequence; k may lie in the margins.
    const T* At(int sequence, int k) const { return m_sequences[sequence].data() + m_origin + k; }

private:
    int m_size;
    int m_margin;
    LineEnds m_ends;
    int m_origin = 0;
    std::vector<T> m_sequences[2];
};

} // namespace wavelet
