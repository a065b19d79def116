// The verb `demotion-blur`.
#include "Errors.h"
#include "EveryVerb.h"
#include "Focus.h"
#include "MotionGuess.h"
#include "ParseNumber.h"
#include "TransformLimits.h"
#include "UndoMotion.h"

namespace cli {
namespace {

void ParseDegree(Settings& settings, const std::string& option, const std::string& text) {
    settings.guessDegree = text == "auto";
    if (settings.guessDegree) {
        return;
    }
    const std::optional<int> degree = ParseWholeNumber(text, -kLargestDegree, kLargestDegree);
    if (!degree) {
        throw UsageError(option + " takes auto or a whole number from " + std::to_string(-kLargestDegree) + " to " +
                         std::to_string(kLargestDegree) + ", not '" + text + "'");
    }
    settings.degree = *degree;
}

/// Undoes motion, keeping the brightness unless the settings ask for the library's own bytes. A degree that had to be
/// guessed is reported unasked.
Report DeMotionBlur(const Settings& settings, const PackedPixels& pixels) {
    int degree = settings.degree;
    Report report;
    if (settings.guessDegree) {
        const MotionGuess guess = GuessMotion(pixels);
        degree = guess.degree;
        report = {"degree " + std::to_string(degree) + ", guessed on " + Describe(guess.region), true};
    }
    if (settings.exact) {
        CImageFocus focus = FocusFor(pixels);
        focus.SetMotionLength(settings.length);
        focus.SetMotionDegree(degree);
        focus.DeMotionBlur(pixels.data, pixels.format, pixels.pitch);
    } else {
        UndoMotion(settings, degree, pixels);
    }
    return report;
}

std::string Misfit(const Settings& settings, const PictureShape& shape) {
    // The kernel, of side 2 * length + 1, has to fit into the extended picture.
    const int largestLength = (shape.SmallerSide() + 2 * FoTransformMargin - 1) / 2;
    if (const std::string misfit = SideMisfit("--length", settings.length, largestLength); !misfit.empty()) {
        return misfit;
    }
    if (const std::string misfit = settings.guessDegree ? GuessMisfit(shape) : ""; !misfit.empty()) {
        return misfit + "; give --degree a number, such as 0";
    }
    return TransformMisfit(std::int64_t{shape.width} + 2 * FoTransformMargin,
                           std::int64_t{shape.height} + 2 * FoTransformMargin);
}

std::int64_t WorkingBytes(const Settings& settings, const PictureShape& shape) {
    // Three planes and, of the extended size, the inverse spectrum and for each worker a plane and a spectrum: 20 bytes
    // a pixel for a single worker, 38 for three, each plus a quarter. The kernel is freed before the workers start.
    const std::int64_t bytesPerPixel = shape.IsGrey() && !settings.exact ? 25 : 48;
    const std::int64_t extended =
        (shape.width + std::int64_t{2} * FoTransformMargin) * (shape.height + std::int64_t{2} * FoTransformMargin);
    return bytesPerPixel * extended + 3 * TransformLineBytes(shape);
}

} // namespace

Verb DeMotionBlurVerb() {
    const std::string turn = std::to_string(kLargestDegree);
    return {"demotion-blur", "undo the smear of motion along a line",
            WithPictureOptions(
                {{"--length", "N",
                  "length of the motion in pixels, at most " + std::to_string(FoTransformMargin - 1) +
                      " more than half the picture's smaller side",
                  WholeNumber{&Settings::length, 1, kLargestLength}},
                 {"--degree", "N|auto",
                  "direction in which points are smeared, counter-clockwise from the right, which is motion-blur's "
                  "turned by 180; -" +
                      turn + " to " + turn + ", or auto to take what guess-motion says",
                  ParsedText{ParseDegree, std::to_string(Settings{}.degree), {"auto"}}}}),
            PixelOperation{DeMotionBlur, Misfit, WorkingBytes}};
}

} // namespace cli
