#include "PlaneSet.h"

#include "PackedPixels.h"

#include <algorithm>

namespace focus {
namespace {

constexpr int kAlignment = 64;
constexpr std::size_t kStagger = 128;

// Calls work(address of packed row, planes of the row) for rows firstRow .. endRow - 1. The walk goes by byte offsets,
// since a pitch may be negative and the address behind the last row need not exist.
template <typename Pixel, typename Work>
void ForEachRow(Pixel* pixels, int pitch, unsigned char* const (&planes)[3], int width, int firstRow, int endRow,
                Work work) {
    for (int y = firstRow; y < endRow && width > 0; ++y) {
        const std::size_t start = static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
        const PlaneRow row = {planes[0] + start, planes[1] + start, planes[2] + start};
        work(pixels + static_cast<std::ptrdiff_t>(y) * pitch, row);
    }
}

} // namespace

FoPlaneSet::FoPlaneSet(int width, int height) : m_Width(width), m_Height(height) {
    const std::size_t samples =
        static_cast<std::size_t>(std::max(width, 0)) * static_cast<std::size_t>(std::max(height, 0));
    for (std::size_t k = 0; k < 3; ++k) {
        m_Planes[k] = static_cast<unsigned char*>(ChAlignedAlloc(samples + k * kStagger, kAlignment)) + k * kStagger;
    }
}

FoPlaneSet::~FoPlaneSet() {
    for (std::size_t k = 0; k < 3; ++k) {
        ChAlignedFree(m_Planes[k] - k * kStagger);
    }
}

void FoPlaneSet::Split(const unsigned char* pixels, FoPixelFmt format, int pitch, int firstRow, int endRow) {
    const PackedPixelRows& rows = ActivePackedPixelRows();
    if (format != FoPixelFmt_BGR24 && format != FoPixelFmt_BGRX32) {
        return;
    }
    const auto split = format == FoPixelFmt_BGR24 ? rows.SplitBGR24 : rows.SplitBGRX32;
    ForEachRow(pixels, pitch, m_Planes, m_Width, firstRow, endRow,
               [&](const unsigned char* packed, const PlaneRow& row) { split(packed, row, m_Width); });
}

void FoPlaneSet::Merge(unsigned char* pixels, FoPixelFmt format, int pitch, int firstRow, int endRow) const {
    const PackedPixelRows& rows = ActivePackedPixelRows();
    if (format != FoPixelFmt_BGR24 && format != FoPixelFmt_BGRX32) {
        return;
    }
    const auto merge = format == FoPixelFmt_BGR24 ? rows.MergeBGR24 : rows.MergeBGRX32;
    ForEachRow(pixels, pitch, m_Planes, m_Width, firstRow, endRow,
               [&](unsigned char* packed, const PlaneRow& row) { merge(packed, row, m_Width); });
}

} // namespace focus
