#include "Focus.h"

#include "Verb.h"

namespace cli {

CImageFocus FocusFor(const PackedPixels& pixels) {
    CImageFocus focus;
    focus.SetSize(pixels.width, pixels.height);
    return focus;
}

std::string RadiusMisfit(const Settings& settings, const PictureShape& shape) {
    return SideMisfit("--radius", settings.radius, shape.SmallerSide());
}

std::int64_t PlanesAndKernelBytes(const PictureShape& shape, std::int64_t halfSize) {
    const std::int64_t side = 2 * halfSize + 1;
    return 3 * shape.Pixels() + 2 * 4 * side * side;
}

} // namespace cli
