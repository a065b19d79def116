#include "kernels/spectra/SpectrumPadding.h"

#include "claribox/ChFunctions.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

/// A tightly packed plane inside one that is `pad` pixels larger on each side.
struct PaddedPlane {
    PaddedPlane(int columns, int rows, int margin)
        : width(static_cast<std::size_t>(columns)), height(static_cast<std::size_t>(rows)),
          pad(static_cast<std::size_t>(margin)), stride(width + 2 * pad) {}

    std::size_t width;
    std::size_t height;
    std::size_t pad;
    std::size_t stride;
};

void CopyRow(unsigned char* to, const unsigned char* from, std::size_t bytes) {
    KernelTable.Copy(to, from, static_cast<std::uint32_t>(bytes));
}

} // namespace

namespace kernels {

void ExtendRow(const unsigned char* from, int width, unsigned char* to, int pad) {
    const auto margin = static_cast<std::size_t>(pad);
    const auto columns = static_cast<std::size_t>(width);
    std::memset(to, from[0], margin);
    CopyRow(to + margin, from, columns);
    std::memset(to + margin + columns, from[columns - 1], margin);
}

} // namespace kernels

void ChEntendBuffer(unsigned char* src, int width, int height, unsigned char* dst, int pad) {
    if (width <= 0 || height <= 0) { // there is no pixel to repeat
        return;
    }
    const PaddedPlane plane(width, height, pad);
    for (int y = 0; y < height + 2 * pad; ++y) {
        const int nearest = std::clamp(y - pad, 0, height - 1);
        kernels::ExtendRow(src + static_cast<std::ptrdiff_t>(nearest) * width, width,
                           dst + static_cast<std::size_t>(y) * plane.stride, pad);
    }
}

void ChCropBuffer(unsigned char* dst, int width, int height, unsigned char* src, int pad) {
    if (width <= 0 || height <= 0) {
        return;
    }
    const PaddedPlane plane(width, height, pad);
    for (std::size_t y = 0; y < plane.height; ++y) {
        CopyRow(dst + y * plane.width, src + (y + plane.pad) * plane.stride + plane.pad, plane.width);
    }
}
