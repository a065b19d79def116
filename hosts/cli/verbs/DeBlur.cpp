// The verb `deblur`.
#include "EveryVerb.h"
#include "Focus.h"

namespace cli {
namespace {

Report DeBlur(const Settings& settings, const PackedPixels& pixels) {
    CImageFocus focus = FocusFor(pixels);
    focus.SetRadius(settings.radius);
    focus.DeBlur(pixels.data, pixels.format, pixels.pitch);
    return {};
}

std::int64_t WorkingBytes(const Settings& settings, const PictureShape& shape) {
    return PlanesAndKernelBytes(shape, settings.radius);
}

} // namespace

Verb DeBlurVerb() {
    return {"deblur", "sharpen out-of-focus pictures",
            WithPictureOptions({{"--radius", "N", "radius of the defocus in pixels, at most the picture's smaller side",
                                 WholeNumber{&Settings::radius, 1, FoMaxDeBlurRadius}}}),
            PixelOperation{DeBlur, RadiusMisfit, WorkingBytes}};
}

} // namespace cli
