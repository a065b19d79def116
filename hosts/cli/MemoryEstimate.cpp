#include "MemoryEstimate.h"

#include "Memory.h"

#include <algorithm>
#include <string_view>

namespace cli {
namespace {

/// The process itself, row buffers and threads. Measured: 32 MiB with libvips 8.14, plus half of that. Too small a
/// number lets the system's memory run out instead of refusing a picture.
constexpr std::int64_t kFixedBytes = 48 * kMebibyte;

/// Bytes a pixel that a reader or writer of libvips holds beside the picture.
struct CoderCost {
    std::string_view name;
    std::int64_t opaque;
    std::int64_t withAlpha;
};

/// Measured as peak memory on 6 megapixels of noise, the costliest picture, with libvips 8.14, plus a tenth or more.
constexpr CoderCost kCoders[] = {
    {"webpload", 10, 12}, {"heifload", 16, 20}, {"magickload", 16, 16}, {"gifload", 8, 8},      {"jxlload", 10, 44},
    {"webpsave", 14, 44}, {"heifsave", 52, 56}, {"jxlsave", 56, 80},    {"magicksave", 16, 16}, {"gifsave", 18, 18},
};

/// All others go row by row, except for progressive JPEG and interlaced PNG, which hold the whole picture.
constexpr std::int64_t kOtherCoderCost = 8;

std::int64_t CoderBytes(const std::string& name, const PictureShape& shape) {
    const auto* row = std::ranges::find_if(kCoders, [&](const CoderCost& cost) { return name.starts_with(cost.name); });
    if (row == std::end(kCoders)) {
        return shape.Pixels() * kOtherCoderCost;
    }
    return shape.Pixels() * (shape.HasAlpha() ? row->withAlpha : row->opaque);
}

} // namespace

std::int64_t MemoryEstimate::Peak() const {
    return throughout + std::max({decoding, turning, working, writing});
}

MemoryEstimate EstimateMemory(const PictureShape& shape, const StoredPicture& stored, std::int64_t workingBytes,
                              const std::string& writer) {
    const std::int64_t picture = shape.Pixels() * shape.bands;
    const std::int64_t spread = shape.IsGrey() ? 3 * shape.Pixels() : 0; // over the library's three channels
    return {.throughout = stored.heldBytes + picture + kFixedBytes + StacksOfOnePicture(),
            .decoding = std::max(CoderBytes(stored.reader, shape), shape.Pixels() * stored.bytesPerPixel),
            .turning = stored.turned ? picture : 0,
            .working = workingBytes + spread,
            .writing = CoderBytes(writer, shape)};
}

} // namespace cli
