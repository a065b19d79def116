#include "Focus.h"

#include "Verb.h"

#include <algorithm>

namespace cli {

CImageFocus FocusFor(const PackedPixels& pixels) {
    CImageFocus focus;
    focus.SetSize(pixels.width, pixels.height);
    return focus;
}

std::string RadiusMisfit(const Settings& settings, const PictureShape& shape) {
    return SideMisfit("--radius", settings.radius, shape.SmallerSide());
}

namespace {

/// As floats and as integers.
std::int64_t KernelBytes(std::int64_t halfSize) {
    const std::int64_t side = 2 * halfSize + 1;
    return 2 * 4 * side * side;
}

} // namespace

std::int64_t PlanesAndKernelBytes(const PictureShape& shape, std::int64_t halfSize) {
    return 3 * shape.Pixels() + KernelBytes(halfSize);
}

std::int64_t RowsAndKernelBytes(const PictureShape& shape, std::int64_t halfSize) {
    constexpr std::int64_t band = 64;
    const std::int64_t reach = 2 * halfSize;
    return 3 * (band + reach) * (std::max(shape.width, shape.height) + reach) + KernelBytes(halfSize);
}

} // namespace cli
