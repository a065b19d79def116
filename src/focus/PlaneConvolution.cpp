// The spatial filter: a correlation in 16.16 fixed point, in place.
//
// The result at a pixel is the sum of integer coefficient times sample over the part of the kernel that lies inside
// the picture, divided by the sum of those coefficients: interior pixels and the border differ in the divisor alone,
// since samples outside count as zero. Products and sums wrap at 32 bits, quotients truncate toward zero, and the only
// clamp is the saturation of KernelTable.PackS32ToU8, made in the same pass as the division. The picture is finished
// from the top down in bands of rows, over copies of their source, and each band from left to right in tiles.
//
// Packed pixels are filtered where they lie: their colours are samples three apart, and all else is the same.
#include "SpatialFilter.h"

#include "KernelSums.h"
#include "Quotients.h"
#include "SourceBand.h"

#include <claribox/CImageFocus.h>

#include <algorithm>
#include <vector>

namespace focus {
namespace {

// Brings back the samples of row y of a plane that the mask keeps, from their copy in the band.
void RestoreMasked(const PictureSamples& plane, const std::uint8_t* mask, const SourceBand& band, int y) {
    const std::uint8_t* const maskRow = mask + y * plane.pitch;
    std::uint8_t* const samples = plane.Row(y);
    const std::uint8_t* const source = band.Row(y);
    for (int x = 0; x < plane.width; ++x) {
        samples[x] = maskRow[x] == 0 ? source[x] : samples[x];
    }
}

template <typename Sums>
void ConvolveWith(const QuantisedKernel& kernel, const PictureSamples& picture, const std::uint8_t* mask) {
    SourceBand band(picture, Sums::ReachOf(kernel));
    Sums sumsOf(kernel, band);
    const int tile = sumsOf.TileSamples() - sumsOf.TileSamples() % picture.kinds;
    Quotients quotients(kernel, picture.width, picture.height, picture.Step(), tile);
    std::vector<std::uint8_t> apart(picture.IsDense() ? 0 : static_cast<std::size_t>(tile));
    do {
        band.Advance();
        for (int x = 0; x < picture.Count(); x += tile) {
            const int count = std::min(tile, picture.Count() - x);
            sumsOf.StartTile(x, count);
            for (int y = band.First(); y < band.End(); ++y) {
                const std::int32_t* const sums = sumsOf.SumNextRow();
                if (picture.IsDense()) {
                    quotients.Store(sums, x, y, count, picture.Row(y) + x);
                } else {
                    quotients.Store(sums, x, y, count, apart.data());
                    picture.Store(apart.data(), y, x, count);
                }
            }
        }
        for (int y = band.First(); mask != nullptr && y < band.End(); ++y) {
            RestoreMasked(picture, mask, band, y);
        }
    } while (band.End() < picture.height);
}

void Convolve(const QuantisedKernel& kernel, const PictureSamples& picture, const std::uint8_t* mask = nullptr) {
    if (MirroredSums::Serves(kernel)) {
        ConvolveWith<MirroredSums>(kernel, picture, mask);
    } else {
        ConvolveWith<TapSums>(kernel, picture, mask);
    }
}

void ConvolvePlane(std::uint8_t* plane, int width, int height, const ChMatrix<float>& kernel,
                   const std::uint8_t* mask = nullptr) {
    if (width > 0 && height > 0 && kernel.Count() > 0) {
        Convolve(QuantisedKernel(kernel), {plane, width, width, height, 1, 1}, mask);
    }
}

} // namespace

void ConvolvePixels(const PackedPicture& picture, const ChMatrix<float>& kernel) {
    if (!picture.HasPixels() || kernel.Count() == 0) {
        return;
    }
    const QuantisedKernel quantised(kernel);
    const Reach reach =
        MirroredSums::Serves(quantised) ? MirroredSums::ReachOf(quantised) : TapSums::ReachOf(quantised);
    const PictureSamples all = picture.Colours();
    if (!SourceBand::IsTooLarge(all, reach)) {
        Convolve(quantised, all);
        return;
    }
    for (int byte = 0; byte < 3; ++byte) { // one colour at a time takes a third of the memory, and longer
        Convolve(quantised, picture.Colour(byte));
    }
}

} // namespace focus

void CImageFocus::ConvolvePlane(unsigned char* plane, ChMatrix<float>& kernel) {
    focus::ConvolvePlane(plane, m_Width, m_Height, kernel);
}

void CImageFocus::ConvolvePlane_Mask(unsigned char* plane, ChMatrix<float>& kernel, unsigned char* mask) {
    focus::ConvolvePlane(plane, m_Width, m_Height, kernel, mask);
}
