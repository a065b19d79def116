#include "TransformLimits.h"

#include <claribox/CImageFocus.h>
#include <claribox/ChFunctions.h>

#include <algorithm>

namespace cli {
std::string TransformMisfit(std::int64_t width, std::int64_t height) {
    return width * height <= ChMaxTransformElements
               ? ""
               : "too large: its transform would have " + std::to_string(width * height) + " elements, at most " +
                     std::to_string(ChMaxTransformElements) + " can be counted in 32 bits";
}

std::int64_t TransformLineBytes(const PictureShape& shape) {
    constexpr std::int64_t bytesPerElement = 256;
    return bytesPerElement * (std::max(shape.width, shape.height) + 2 * FoTransformMargin);
}

} // namespace cli
