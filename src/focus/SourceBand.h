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
        : m_Plane(plane), m_Width(width), m_Height(height), m_Above(kernel.RowsAbove()), m_Left(kernel.ColsLeft()),
          m_Kept(kernel.Rows() - 1),
          m_Stride(static_cast<std::size_t>(width) + static_cast<std::size_t>(kernel.Cols() - 1) + kRowSlack),
          m_Count(EvenAbove(
              std::min(height, std::clamp(static_cast<int>(kUsualBytes / m_Stride) - m_Kept, kFewest, kMost)))),
          m_First(-m_Count), m_Rows(m_Stride * static_cast<std::size_t>(m_Kept + m_Count), 0) {
        CopyRows(m_Count, m_Kept);
    }

    /// Moves on to the next band; the first call makes the first one.
    void Advance() {
        const std::size_t kept = static_cast<std::size_t>(m_Kept) * m_Stride;
        std::memmove(m_Rows.data(), m_Rows.data() + m_Rows.size() - kept, kept);
        m_First += m_Count;
        CopyRows(m_Kept, m_Count);
    }

    /// The output rows of the band that lie inside the plane.
    int First() const { return m_First; }
    int End() const { return std::min(m_First + m_Count, m_Height); }

    /// Column 0 of row y, which the kernel reaches from the band. Rows are Stride() bytes apart.
    const std::uint8_t* Row(int y) const {
        return m_Rows.data() + static_cast<std::size_t>(y - m_First + m_Above) * m_Stride +
               static_cast<std::size_t>(m_Left);
    }
    std::size_t Stride() const { return m_Stride; }

private:
    // More rows a band cost fewer copies of the rows that two bands share, and more memory.
    static constexpr int kMost = 64;
    static constexpr int kFewest = 8;
    static constexpr std::size_t kUsualBytes = std::size_t{384} << 10;

    static int EvenAbove(int count) { return count + count % 2; }

    // Fills `count` of the rows held, from the one at `index` on.
    void CopyRows(int index, int count) {
        for (int y = m_First - m_Above + index; count > 0; ++y, --count) {
            std::uint8_t* const row = const_cast<std::uint8_t*>(Row(y));
            const auto width = static_cast<std::size_t>(m_Width);
            if (y >= 0 && y < m_Height) {
                std::memcpy(row, m_Plane + static_cast<std::size_t>(y) * width, width);
            } else {
                std::memset(row, 0, width);
            }
        }
    }

    const std::uint8_t* m_Plane;
    int m_Width;
    int m_Height;
    int m_Above;
    int m_Left;
    int m_Kept; // rows that a band shares with the next
    std::size_t m_Stride;
    int m_Count;
    int m_First;
    std::vector<std::uint8_t> m_Rows;
};

} // namespace focus
