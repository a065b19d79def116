// The source rows that a band of output rows needs, kept while the plane is overwritten from the top down.
#pragma once

#include "ConvolutionRows.h"
#include "QuantisedKernel.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace focus {

/// Copies of successive rows of a plane: those of a band of output rows, and above and below them as many as the
/// kernel reaches. A band has an even number of rows, so that they can be worked on two at once; the last may reach
/// below the plane. Samples outside the plane read as zeros. Memory: about (band + kernel rows) * (width + kernel
/// columns) bytes, whatever the plane's height.
class SourceBand {
public:
    SourceBand(const std::uint8_t* plane, int width, int height, const QuantisedKernel& kernel)
        : m_plane(plane), m_width(width), m_height(height), m_above(kernel.RowsAbove()), m_left(kernel.ColsLeft()),
          m_kept(kernel.Rows() - 1),
          m_stride(static_cast<std::size_t>(width) + static_cast<std::size_t>(kernel.Cols() - 1) + kRowSlack),
          m_count(EvenAbove(
              std::min(height, std::clamp(static_cast<int>(kUsualBytes / m_stride) - m_kept, kFewest, kMost)))),
          m_first(-m_count), m_rows(m_stride * static_cast<std::size_t>(m_kept + m_count), 0) {
        CopyRows(m_count, m_kept);
    }

    /// Moves on to the next band; the first call makes the first one.
    void Advance() {
        const std::size_t kept = static_cast<std::size_t>(m_kept) * m_stride;
        std::memmove(m_rows.data(), m_rows.data() + m_rows.size() - kept, kept);
        m_first += m_count;
        CopyRows(m_kept, m_count);
    }

    /// The output rows of the band that lie inside the plane.
    int First() const { return m_first; }
    int End() const { return std::min(m_first + m_count, m_height); }

    /// Column 0 of row y, which the kernel reaches from the band. Rows are Stride() bytes apart.
    const std::uint8_t* Row(int y) const {
        return m_rows.data() + static_cast<std::size_t>(y - m_first + m_above) * m_stride +
               static_cast<std::size_t>(m_left);
    }
    std::size_t Stride() const { return m_stride; }

private:
    // More rows a band cost fewer copies of the rows that two bands share, and more memory.
    static constexpr int kMost = 64;
    static constexpr int kFewest = 8;
    static constexpr std::size_t kUsualBytes = std::size_t{384} << 10;

    static int EvenAbove(int count) { return count + count % 2; }

    // Fills `count` of the rows held, from the one at `index` on.
    void CopyRows(int index, int count) {
        for (int y = m_first - m_above + index; count > 0; ++y, --count) {
            std::uint8_t* const row = const_cast<std::uint8_t*>(Row(y));
            const auto width = static_cast<std::size_t>(m_width);
            if (y >= 0 && y < m_height) {
                std::memcpy(row, m_plane + static_cast<std::size_t>(y) * width, width);
            } else {
                std::memset(row, 0, width);
            }
        }
    }

    const std::uint8_t* m_plane;
    int m_width;
    int m_height;
    int m_above;
    int m_left;
    int m_kept; // rows that a band shares with the next
    std::size_t m_stride;
    int m_count;
    int m_first;
    std::vector<std::uint8_t> m_rows;
};

} // namespace focus
