#include "Luminance.h"

#include "LuminanceRows.h"
#include "PackedPixels.h"

#include <claribox/KernelTable.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace focus {
namespace {

constexpr int kAlignment = 64;
constexpr int kPiece = 2048; // pixels split at a time; they stay in the first-level cache

std::size_t SampleCount(int width, int height) {
    return static_cast<std::size_t>(std::max(width, 0)) * static_cast<std::size_t>(std::max(height, 0));
}

} // namespace

void LuminancePlane::Release::operator()(std::uint8_t* block) const {
    ChAlignedFree(block);
}

LuminancePlane::LuminancePlane(const unsigned char* pixels, FoPixelFmt format, int pitch, int width, int height,
                               int step)
    : m_Width(width / step), m_Height(height / step),
      m_Samples(static_cast<std::uint8_t*>(ChAlignedAlloc(SampleCount(m_Width, m_Height), kAlignment))) {
    if (format != FoPixelFmt_BGR24 && format != FoPixelFmt_BGRX32) {
        std::memset(m_Samples.get(), 0, SampleCount(m_Width, m_Height));
        return;
    }
    const auto split =
        format == FoPixelFmt_BGR24 ? ActivePackedPixelRows().SplitBGR24 : ActivePackedPixelRows().SplitBGRX32;
    const auto weigh = step == 1 ? ActiveLuminanceRows().Guess : ActiveLuminanceRows().GuessEverySecond;
    const std::ptrdiff_t pixelBytes = format == FoPixelFmt_BGR24 ? 3 : 4;
    alignas(kAlignment) std::uint8_t colours[3][kPiece];
    const PlaneRow planes = {colours[0], colours[1], colours[2]};
    std::uint8_t* samples = m_Samples.get();
    for (int y = 0; y < m_Height; ++y) {
        const unsigned char* const row = pixels + static_cast<std::ptrdiff_t>(y) * step * pitch;
        for (int x = 0; x < m_Width; x += kPiece / step) {
            const int count = std::min(kPiece / step, m_Width - x);
            split(row + x * step * pixelBytes, planes, (count - 1) * step + 1);
            weigh(planes, samples, count);
            samples += count;
        }
    }
}

} // namespace focus

void CImageFocus::CvtToPlaneY(unsigned char* y, unsigned char* first, unsigned char* second, unsigned char* third) {
    const auto width = static_cast<std::size_t>(std::max(m_Width, 0));
    for (int row = 0; row < m_Height; ++row) {
        const std::size_t start = static_cast<std::size_t>(row) * width;
        focus::ActiveLuminanceRows().Video({first + start, second + start, third + start}, y + start, m_Width);
    }
}
