// The spatial filter: a correlation in 16.16 fixed point, in place.
//
// The result at a pixel is the sum of integer coefficient times sample over the part of the kernel that lies inside
// the picture, divided by the sum of those coefficients: interior pixels and the border differ in the divisor alone,
// since samples outside count as zero. Products and sums wrap at 32 bits, quotients truncate toward zero, and the only
// clamp is the saturation of KernelTable.PackS32ToU8, made in the same pass as the division. The plane is finished from
// the top down in bands of rows, over copies of their source, and each band from left to right in tiles.
#include <claribox/CImageFocus.h>

#include "KernelSums.h"
#include "Quotients.h"
#include "SourceBand.h"

#include <algorithm>

namespace focus {
namespace {

struct Plane {
    std::uint8_t* samples;
    const std::uint8_t* mask; ///< null, or a plane whose zeros mark samples to keep
    int width;
    int height;

    std::size_t RowStart(int y) const { return static_cast<std::size_t>(y) * static_cast<std::size_t>(width); }
};

// Brings back the samples of row y that the mask keeps, from their copy in the band.
void RestoreMasked(const Plane& plane, const SourceBand& band, int y) {
    const std::uint8_t* const mask = plane.mask + plane.RowStart(y);
    std::uint8_t* const samples = plane.samples + plane.RowStart(y);
    const std::uint8_t* const source = band.Row(y);
    for (int x = 0; x < plane.width; ++x) {
        samples[x] = mask[x] == 0 ? source[x] : samples[x];
    }
}

template <typename Sums>
void ConvolveWith(const QuantisedKernel& kernel, const Plane& plane) {
    SourceBand band(plane.samples, plane.width, plane.height, kernel);
    Sums sumsOf(kernel, band);
    const int tileColumns = sumsOf.TileColumns();
    Quotients quotients(kernel, plane.width, plane.height, tileColumns);
    do {
        band.Advance();
        for (int x = 0; x < plane.width; x += tileColumns) {
            const int count = std::min(tileColumns, plane.width - x);
            sumsOf.StartTile(x, count);
            for (int y = band.First(); y < band.End(); ++y) {
                quotients.Store(sumsOf.SumNextRow(), x, y, count,
                                plane.samples + plane.RowStart(y) + static_cast<std::size_t>(x));
            }
        }
        for (int y = band.First(); plane.mask != nullptr && y < band.End(); ++y) {
            RestoreMasked(plane, band, y);
        }
    } while (band.End() < plane.height);
}

void Convolve(const Plane& plane, const ChMatrix<float>& kernel) {
    if (plane.width <= 0 || plane.height <= 0 || kernel.Count() == 0) {
        return;
    }
    const QuantisedKernel quantised(kernel);
    if (MirroredSums::Serves(quantised)) {
        ConvolveWith<MirroredSums>(quantised, plane);
    } else {
        ConvolveWith<TapSums>(quantised, plane);
    }
}

} // namespace
} // namespace focus

void CImageFocus::ConvolvePlane(unsigned char* plane, ChMatrix<float>& kernel) {
    focus::Convolve({plane, nullptr, m_Width, m_Height}, kernel);
}

void CImageFocus::ConvolvePlane_Mask(unsigned char* plane, ChMatrix<float>& kernel, unsigned char* mask) {
    focus::Convolve({plane, mask, m_Width, m_Height}, kernel);
}
