// The verb `motion-blur`.
#include "EveryVerb.h"
#include "Focus.h"

namespace cli {
namespace {

Report MotionBlur(const Settings& settings, const PackedPixels& pixels) {
    CImageFocus focus = FocusFor(pixels);
    focus.SetMotionLength(settings.length);
    focus.SetMotionDegree(settings.degree);
    focus.MotionBlur(pixels.data, pixels.format, pixels.pitch);
    return {};
}

std::string Misfit(const Settings& settings, const PictureShape& shape) {
    return SideMisfit("--length", settings.length, shape.SmallerSide() - 1);
}

std::int64_t WorkingBytes(const Settings& settings, const PictureShape& shape) {
    return RowsAndKernelBytes(shape, settings.length);
}

} // namespace

Verb MotionBlurVerb() {
    return {"motion-blur", "smear pictures along a line, as a moving camera does",
            WithPictureOptions({{"--length", "N", "length of the motion in pixels, below the picture's smaller side",
                                 WholeNumber{&Settings::length, 1, kLargestLength}},
                                {"--degree", "N", "direction of the camera's motion, counter-clockwise from the right",
                                 WholeNumber{&Settings::degree, -kLargestDegree, kLargestDegree}}}),
            PixelOperation{MotionBlur, Misfit, WorkingBytes}};
}

} // namespace cli
