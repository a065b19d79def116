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

void ChEntendBuffer(unsigned char* src, int width, int height, unsigned char* dst, int pad) {
    if (width <= 0 || height <= 0) { // there is no pixel to repeat
        return;
    }
    const PaddedPlane plane(width, height, pad);
    for (std::size_t y = 0; y < plane.height + 2 * plane.pad; ++y) {
        const std::size_t nearest = std::min(std::max(y, plane.pad) - plane.pad, plane.height - 1);
        const unsigned char* const from = src + nearest * plane.width;
        unsigned char* const to = dst + y * plane.stride;
        std::memset(to, from[0], plane.pad);
        CopyRow(to + plane.pad, from, plane.width);
        std::memset(to + plane.pad + plane.width, from[plane.width - 1], plane.pad);
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
