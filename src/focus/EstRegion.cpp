// The busiest square of a plane.
//
// All sums are integers. With B the side of a block, m the sum of its samples and q that of their squares, the block's
// mean is m / B^2 and its variance v / B^4, where v = B^2 * q - m^2. The score of a window of n by n blocks, the sum of
// the variances plus the variance of the means, is then
//
//     (n^4 * sum(v) + n^2 * sum(m^2) - sum(m)^2) / (B^4 * n^4)
//
// and the numerator alone decides. For B = 8 and n = 64, v is below 2^26 and m below 2^14, so that the terms stay below
// 2^62, 2^52 and 2^52: 64 bits hold every score exactly, and running sums are as good as fresh ones.
#include "EstRegion.h"

#include <claribox/CImageFocus.h>

#include "BlockStatistics.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace focus {
namespace {

// Sums over blocks of v, m and m^2.
struct Moments {
    std::int64_t variances = 0;
    std::int64_t means = 0;
    std::int64_t squares = 0;

    Moments() = default;
    explicit Moments(const BlockSums& block)
        : variances(std::int64_t{kBlockSide * kBlockSide} * block.squares -
                    std::int64_t{block.samples} * block.samples),
          means(block.samples), squares(means * means) {}

    void operator+=(const Moments& other) {
        variances += other.variances;
        means += other.means;
        squares += other.squares;
    }
    void operator-=(const Moments& other) {
        variances -= other.variances;
        means -= other.means;
        squares -= other.squares;
    }

    std::int64_t Score(int side) const {
        const std::int64_t blocks = std::int64_t{side} * side;
        return blocks * blocks * variances + blocks * squares - means * means;
    }
};

struct BlockPosition {
    int row;
    int col;
};

// The first window of the highest score, rows before columns. Required: the last position in each direction is not
// tried (EstRegionTest.TheBusiestSquareIsTheFirstOfTheBest). There is at least one window.
BlockPosition BusiestWindow(const std::uint8_t* plane, int width, int rows, int cols, int side) {
    const auto colCount = static_cast<std::size_t>(cols);
    const BlockStatistics& statistics = ActiveBlockStatistics();
    std::vector<BlockSums> blocks(static_cast<std::size_t>(rows) * colCount);
    std::vector<Moments> columns(colCount); // over the rows of the window
    const auto blockRow = [&](int row) { return blocks.data() + static_cast<std::size_t>(row) * colCount; };
    BlockPosition best = {0, 0};
    std::int64_t bestScore = -1; // no score is below 0
    for (int row = 0; row < rows - 1; ++row) {
        statistics.SumRow(plane + static_cast<std::ptrdiff_t>(row) * kBlockSide * width, width, blockRow(row), cols);
        for (std::size_t col = 0; col < colCount; ++col) {
            columns[col] += Moments(blockRow(row)[col]);
            if (row >= side) {
                columns[col] -= Moments(blockRow(row - side)[col]);
            }
        }
        if (row < side - 1) {
            continue;
        }
        Moments window;
        for (int col = 0; col < cols - 1; ++col) {
            window += columns[static_cast<std::size_t>(col)];
            if (col >= side) {
                window -= columns[static_cast<std::size_t>(col - side)];
            }
            if (col >= side - 1 && window.Score(side) > bestScore) {
                bestScore = window.Score(side);
                best = {row - side + 1, col - side + 1};
            }
        }
    }
    return best;
}

} // namespace
} // namespace focus

void CImageFocus::Probe_Region(unsigned char* plane, int width, int height) {
    if (width <= m_EstSize && height <= m_EstSize) {
        m_EstLeft = 0;
        m_EstTop = 0;
        return;
    }
    const int rows = height / m_EstBlock;
    const int cols = width / m_EstBlock;
    const int side = m_EstSize / m_EstBlock;
    if (rows <= side || cols <= side) {
        return; // required: the region stays where an earlier picture had it
                // (MotionGuess.OfPackedPixelsIsThatOfThePlainForm)
    }
    const focus::BlockPosition best = focus::BusiestWindow(plane, width, rows, cols, side);
    m_EstLeft = best.col * m_EstBlock;
    m_EstTop = best.row * m_EstBlock;
}

void CImageFocus::GetEstRect(int& left, int& top, int& right, int& bottom) const {
    // Required: the object's size decides, even where the region was found on a plane of half the size. Pinned by
    // EstRectTest.IsToldByTheFullSize.
    left = m_EstLeft;
    top = m_EstTop;
    right = m_Width > m_EstSize ? left + m_EstSize : m_Width - 1;
    bottom = m_Height > m_EstSize ? top + m_EstSize : m_Height - 1;
}

void CImageFocus::GetEstRectActSize(int& left, int& top, int& right, int& bottom) const {
    if (focus::PixelCount(m_Width, m_Height) <= FoHalfSizePixels) {
        GetEstRect(left, top, right, bottom);
        return;
    }
    left = 2 * m_EstLeft; // not bounded by the picture
    top = 2 * m_EstTop;
    right = left + 2 * m_EstSize;
    bottom = top + 2 * m_EstSize;
}
