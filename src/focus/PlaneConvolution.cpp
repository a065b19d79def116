// The spatial filter: a correlation in 16.16 fixed point, in place.
//
// The result at a pixel is the sum of integer coefficient times sample over the part of the kernel that lies inside
// the picture, divided by the sum of those coefficients: interior pixels and the border differ in the divisor alone,
// since samples outside count as zero. Products and sums wrap at 32 bits, quotients truncate toward zero, and the only
// clamp is the saturation of KernelTable.PackS32ToU8, made in the same pass as the division. Rows are finished from the
// top down, over a ring of copies of the source.
#include <claribox/CImageFocus.h>

#include "KernelSums.h"

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

// Brings back the samples of row y that the mask keeps, from their copy in the ring.
void RestoreMasked(const Plane& plane, const RowRing& ring, int y) {
    const std::uint8_t* const mask = plane.mask + plane.RowStart(y);
    std::uint8_t* const samples = plane.samples + plane.RowStart(y);
    const std::uint8_t* const source = ring.Row(y);
    for (int x = 0; x < plane.width; ++x) {
        samples[x] = mask[x] == 0 ? source[x] : samples[x];
    }
}

template <typename Sums>
void ConvolveWith(Sums sumsOf, const QuantisedKernel& kernel, const Plane& plane) {
    const ConvolutionRows& rows = ActiveConvolutionRows();
    const int above = kernel.RowsAbove();
    const int below = kernel.Rows() - 1 - above;
    RowRing ring(plane.width, plane.height, kernel.Rows(), kernel.ColsLeft(), kernel.Cols() - 1 - kernel.ColsLeft());
    for (int y = 0; y < std::min(below, plane.height); ++y) {
        ring.Put(y, plane.samples + plane.RowStart(y));
    }
    std::vector<double> reciprocals(static_cast<std::size_t>(plane.width));
    std::vector<std::int32_t> sums(kTileColumns + kRowSlack);
    int knownFirst = -1;
    int knownLast = -1;
    for (int y = 0; y < plane.height; ++y) {
        if (y + below < plane.height) {
            ring.Put(y + below, plane.samples + plane.RowStart(y + below));
        }
        const int first = std::max(0, above - y);
        const int last = std::min(kernel.Rows(), plane.height - y + above);
        if (first != knownFirst || last != knownLast) {
            kernel.FillReciprocals(first, last, plane.width, reciprocals.data());
            knownFirst = first;
            knownLast = last;
        }
        for (int x = 0; x < plane.width; x += kTileColumns) {
            const int count = std::min(kTileColumns, plane.width - x);
            sumsOf(ring, y, x, count, sums.data());
            rows.PackQuotients(sums.data(), reciprocals.data() + x,
                               plane.samples + plane.RowStart(y) + static_cast<std::size_t>(x), count);
        }
        if (plane.mask != nullptr) {
            RestoreMasked(plane, ring, y);
        }
    }
}

void Convolve(const Plane& plane, const ChMatrix<float>& kernel) {
    if (plane.width <= 0 || plane.height <= 0 || kernel.Count() == 0) {
        return;
    }
    const QuantisedKernel quantised(kernel);
    if (MirroredSums::Serves(quantised)) {
        ConvolveWith(MirroredSums(quantised), quantised, plane);
    } else {
        ConvolveWith(TapSums(quantised), quantised, plane);
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
