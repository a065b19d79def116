// A line of one level as two sequences at half rate, continued beyond its ends: what a polyphase filter reads.
#pragma once

#include "Extension.h"

#include <cstddef>
#include <vector>

namespace wavelet {

/// How a line is extended beyond its ends: repeated, or mirrored with the kinds of the line itself in the forward
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
    LineSequences(int size, int margin, const LineEnds& ends) : m_Size(size), m_Margin(margin), m_Ends(ends) {
        for (std::vector<T>& sequence : m_Sequences) {
            sequence.resize(static_cast<std::size_t>((size + 1) / 2 + 2 * margin));
        }
    }

    /// Takes the even and the odd samples of a buffer of size + 2 * margin cells, whose margins it fills first.
    void TakeSamples(T* buffer) {
        Extend(buffer, m_Size, m_Margin, m_Ends.mirrored, m_Ends.line);
        const int before = m_Margin / 2;
        const T* const samples = buffer + m_Margin - 2 * before;
        const int count = before + (m_Size + m_Margin) / 2;
        m_Origin = before;
        T* const even = m_Sequences[0].data();
        T* const odd = m_Sequences[1].data();
        for (int k = 0; k < count; ++k) {
            even[k] = samples[2 * k];
            odd[k] = samples[2 * k + 1];
        }
    }

    /// The place of the (size + 1) / 2 low samples (0) or of the size / 2 high ones (1).
    T* Band(int sequence) { return m_Sequences[sequence].data() + m_Margin; }

    /// Continues both bands. A periodic line of one sample has no high one, and its low one stands in: required (the
    /// rows 1 wide and 1 high of tests/wavelet pin it).
    void ExtendBands() {
        const int low = (m_Size + 1) / 2;
        m_Origin = m_Margin;
        Extend(m_Sequences[0].data(), low, m_Margin, m_Ends.mirrored, m_Ends.low);
        if (m_Size == 1 && !m_Ends.mirrored) {
            m_Sequences[1] = m_Sequences[0];
        } else {
            Extend(m_Sequences[1].data(), m_Size - low, m_Margin, m_Ends.mirrored, m_Ends.high);
        }
    }

    /// Element `k` of a sequence; k may lie in the margins.
    const T* At(int sequence, int k) const { return m_Sequences[sequence].data() + m_Origin + k; }

private:
    int m_Size;
    int m_Margin;
    LineEnds m_Ends;
    int m_Origin = 0;
    std::vector<T> m_Sequences[2];
};

} // namespace wavelet
