#include "Frequency.h"

#include "MotionGuess.h"
#include "UndoMotion.h"
#include "Verbs.h"

#include <claribox/ChFunctions.h>

#include <vips/vips8>

#include <algorithm>
#include <vector>

namespace cli {
namespace {

/// The library and its transforms count the two floats of an element in 32 bits.
constexpr std::int64_t LargestTransform = (std::int64_t{1} << 30) - 1;

std::string TransformMisfit(std::int64_t width, std::int64_t height) {
    return width * height <= LargestTransform
               ? ""
               : "too large: its transform would have " + std::to_string(width * height) + " elements, at most " +
                     std::to_string(LargestTransform) + " can be counted in 32 bits";
}

/// An upper estimate of what the transform of one plane holds beside the plane: tables of both sides and a batch of
/// lines, for lengths with large prime factors padded to as much as four times the length.
std::int64_t LineBytes(const PictureShape& shape) {
    return std::int64_t{256} * (std::max(shape.width, shape.height) + 2 * TransformMargin);
}

/// The plane with its first pixel moved to the middle and all others along, around the edges.
void Centre(std::vector<unsigned char>& plane, int width, int height) {
    const vips::VImage image =
        vips::VImage::new_from_memory(plane.data(), plane.size(), width, height, 1, VIPS_FORMAT_UCHAR);
    const vips::VImage centred = image.wrap().copy_memory();
    const auto* first = static_cast<const unsigned char*>(centred.data());
    std::copy(first, first + plane.size(), plane.begin());
}

} // namespace

Report DeMotionBlurPixels(const Settings& settings, const PackedPixels& pixels) {
    int degree = settings.degree;
    Report report;
    if (settings.guessDegree) {
        const MotionGuess guess = GuessMotion(pixels);
        degree = guess.degree;
        report = {"degree " + std::to_string(degree) + ", guessed on " + Describe(guess.region), true};
    }
    if (settings.exact) {
        CImageFocus focus;
        focus.SetSize(pixels.width, pixels.height);
        focus.SetMotionLength(settings.length);
        focus.SetMotionDegree(degree);
        focus.DeMotionBlur(pixels.data, pixels.format, pixels.pitch);
    } else {
        UndoMotion(settings, degree, pixels);
    }
    return report;
}

Report ShowSpectrum(const Settings& settings, const PackedPixels& pixels) {
    std::vector<unsigned char> plane(CountOf(pixels));
    ForEachPixel(pixels, [&](int b, int, int, std::size_t k) { plane[k] = static_cast<unsigned char>(b); });
    ChShowPowerSpectrum(plane.data(), pixels.width, pixels.height);
    if (settings.centred) {
        Centre(plane, pixels.width, pixels.height);
    }
    ForEachPixel(pixels,
                 [&](unsigned char& b, unsigned char& g, unsigned char& r, std::size_t k) { b = g = r = plane[k]; });
    return {};
}

std::string DeMotionBlurMisfit(const Settings& settings, const PictureShape& shape) {
    // The kernel, of side 2 * length + 1, has to fit into the extended picture.
    const int largestLength = (shape.SmallerSide() + 2 * TransformMargin - 1) / 2;
    if (const std::string misfit = SideMisfit("--length", settings.length, largestLength); !misfit.empty()) {
        return misfit;
    }
    if (const std::string misfit = settings.guessDegree ? GuessMisfit(shape) : ""; !misfit.empty()) {
        return misfit + "; give --degree a number, such as 0";
    }
    return TransformMisfit(std::int64_t{shape.width} + 2 * TransformMargin,
                           std::int64_t{shape.height} + 2 * TransformMargin);
}

std::string SpectrumMisfit(const Settings&, const PictureShape& shape) {
    return TransformMisfit(shape.width, shape.height);
}

std::int64_t DeMotionBlurWorkingBytes(const Settings& settings, const PictureShape& shape) {
    // Three planes and, of the extended size, the inverse spectrum and for each worker a plane and a spectrum: 20 bytes
    // a pixel for a single worker, 38 for three. The kernel is gone before the workers start.
    const std::int64_t bytesPerPixel = shape.bands < 3 && !settings.exact ? 25 : 48;
    const std::int64_t extended =
        (shape.width + std::int64_t{2} * TransformMargin) * (shape.height + std::int64_t{2} * TransformMargin);
    return bytesPerPixel * extended + 3 * LineBytes(shape);
}

std::int64_t SpectrumWorkingBytes(const Settings&, const PictureShape& shape) {
    // A spectrum, its plane and the shifted one.
    constexpr std::int64_t bytesPerPixel = 8 + 1 + 1;
    return bytesPerPixel * shape.Pixels() + LineBytes(shape);
}

} // namespace cli
