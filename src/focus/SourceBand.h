// The source rows that a band of output rows needs, kept while the picture is overwritten from the top down.
#pragma once

#include "ConvolutionRows.h"
#include "PictureSamples.h"
#include "QuantisedKernel.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace focus {

/// Copies of successive rows of samples: those of a band of output rows, and above and below them as many as the
/// kernel reaches. A band has an even number of rows, so that they can be worked on two at once; the last may reach
/// below the picture. Samples outside the picture read as zeros. Memory: about (band + kernel rows) * (width + kernel
/// columns) samples, whatever the height.
class SourceBand {
public:
    SourceBand(const PictureSamples& picture, const Reach& reach)
        : m_Picture(picture), m_Above(reach.above),
          m_Left(static_cast<std::size_t>(reach.left) * static_cast<std::size_t>(picture.Step())),
          m_Kept(reach.Rows() - 1), m_Stride(StrideOf(picture, reach)),
          m_Count(EvenAbove(std::min(picture.height, BandRows(m_Stride, m_Kept)))), m_First(-m_Count),
          m_Rows(m_Stride * static_cast<std::size_t>(m_Kept + m_Count), 0) {
        CopyRows(m_Count, m_Kept);
    }

    /// Moves on to the next band; the first call makes the first one.
    void Advance() {
        const std::size_t kept = static_cast<std::size_t>(m_Kept) * m_Stride;
        std::memmove(m_Rows.data(), m_Rows.data() + m_Rows.size() - kept, kept);
        m_First += m_Count;
        CopyRows(m_Kept, m_Count);
    }

    /// The output rows of the band that lie inside the picture.
    int First() const { return m_First; }
    int End() const { return std::min(m_First + m_Count, m_Picture.height); }

    /// Sample 0 of row y, which the kernel reaches from the band. Rows are Stride() bytes apart, samples of
    /// neighbouring pixels Step().
    const std::uint8_t* Row(int y) const {
        return m_Rows.data() + static_cast<std::size_t>(y - m_First + m_Above) * m_Stride + m_Left;
    }
    std::size_t Stride() const { return m_Stride; }
    int Step() const { return m_Picture.Step(); }

    /// Whether even the smallest band would take more than kMostBytes.
    static bool IsTooLarge(const PictureSamples& picture, const Reach& reach) {
        return StrideOf(picture, reach) * static_cast<std::size_t>(reach.Rows() - 1 + kFewest) > kMostBytes;
    }

private:
    // More rows a band cost fewer copies and foldings of the rows that two bands share, and more memory; a second-level
    // cache of 1 MiB should hold them. Tuned on pictures of 4000x3000 and 8000x6000.
    static constexpr std::size_t kUsualBytes = std::size_t{640} << 10;
    // Narrower than 10000 pixels, the rows of all colours under a kernel of radius 10 stay below it.
    static constexpr std::size_t kMostBytes = std::size_t{896} << 10;
    static constexpr int kMost = 64;
    static constexpr int kFewest = 8;

    /// As many as fit into the usual bytes; of a tall kernel up to four times as many as it shares, if kMostBytes hold.
    static int BandRows(std::size_t stride, int kept) {
        const int usual = static_cast<int>(kUsualBytes / stride) - kept;
        const int most = static_cast<int>(kMostBytes / stride) - kept;
        return std::clamp(std::max(usual, std::min(4 * kept, most)), kFewest, kMost);
    }

    static int EvenAbove(int count) { return count + count % 2; }

    static std::size_t StrideOf(const PictureSamples& picture, const Reach& reach) {
        return (static_cast<std::size_t>(picture.width) + static_cast<std::size_t>(reach.Cols() - 1)) *
                   static_cast<std::size_t>(picture.Step()) +
               kRowSlack;
    }

    // Fills `count` of the rows held, from the one at `index` on.
    void CopyRows(int index, int count) {
        for (int y = m_First - m_Above + index; count > 0; ++y, --count) {
            std::uint8_t* const row = const_cast<std::uint8_t*>(Row(y));
            if (y >= 0 && y < m_Picture.height) {
                m_Picture.Load(y, row);
            } else {
                std::memset(row, 0, static_cast<std::size_t>(m_Picture.Count()));
            }
        }
    }

    PictureSamples m_Picture;
    int m_Above;
    std::size_t m_Left;
    int m_Kept; // rows that a band shares with the next
    std::size_t m_Stride;
    int m_Count;
    int m_First;
    std::vector<std::uint8_t> m_Rows;
};

} // namespace focus
