// The verb `blur`.
#include "BlurLimit.h"
#include "Errors.h"
#include "EveryVerb.h"
#include "Focus.h"

#include <cstdio>

namespace cli {
namespace {

/// Above the safe radius the sum under the kernel can pass 2^31, and is defined to wrap.
std::string Caution(const Settings& settings) {
    if (!settings.exact || settings.radius <= FoMaxSafeBlurRadius) {
        return {};
    }
    const std::string side = std::to_string(2 * settings.radius + 1);
    char mean[16];
    std::snprintf(mean, sizeof mean, "%.1f", WrappingMean(settings.radius));
    return "--radius " + std::to_string(settings.radius) + ": where the mean of the " + side + " by " + side +
           " samples around a pixel passes " + mean +
           ", its sum wraps at 32 bits and it turns black or takes a random level";
}

Report Blur(const Settings& settings, const PackedPixels& pixels) {
    if (!settings.exact && settings.radius > FoMaxSafeBlurRadius && BlurWraps(pixels, settings.radius)) {
        throw PictureError(
            "--radius " + std::to_string(settings.radius) +
            " would turn bright areas of this picture black, because sums wrap at 32 bits; give at most " +
            std::to_string(LargestUnwrappedRadius(pixels, settings.radius - 1)) + ", or --exact to do it anyway");
    }
    CImageFocus focus = FocusFor(pixels);
    focus.SetRadius(settings.radius);
    focus.Blur(pixels.data, pixels.format, pixels.pitch);
    return {};
}

std::int64_t WorkingBytes(const Settings& settings, const PictureShape& shape) {
    constexpr std::int64_t copy = 4; // bytes a pixel: where it is close whether a sum wraps, a copy is blurred
    return copy * shape.Pixels() + RowsAndKernelBytes(shape, settings.radius);
}

} // namespace

Verb BlurVerb() {
    return {"blur", "blur pictures",
            WithPictureOptions({{"--radius", "N", "radius of the blur in pixels, at most the picture's smaller side",
                                 WholeNumber{&Settings::radius, 1, kLargestBlurRadius}}}),
            PixelOperation{Blur, RadiusMisfit, WorkingBytes, Caution}};
}

} // namespace cli
