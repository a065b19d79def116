#include "MotionGuess.h"

// The command is linked against the library's inner archive for this: the costs of all degrees are not exported.
#include "focus/EstRegion.h"
#include "focus/Luminance.h"
#include "focus/MotionCosts.h"

#include <algorithm>
#include <chrono>

namespace cli {
namespace {

/// Smallest side on which pixels with all their neighbours are measured.
constexpr int kSmallestMeasured = 4;

bool IsLookedAtInHalfSize(std::int64_t pixels) {
    return pixels >= FoHalfSizePixels;
}

Region RegionOf(const CImageFocus& focus, const PackedPixels& pixels) {
    Region region = {};
    focus.GetEstRectActSize(region.left, region.top, region.right, region.bottom);
    // For a picture of exactly this size, though examined at half size, the library reports half-size coordinates.
    const int scale = CountOf(pixels) == FoHalfSizePixels ? 2 : 1;
    return {std::min(scale * region.left, pixels.width), std::min(scale * region.top, pixels.height),
            std::min(scale * region.right, pixels.width), std::min(scale * region.bottom, pixels.height)};
}

DegreeCosts CostsOf(const CImageFocus& focus, const PackedPixels& pixels) {
    const int step = IsLookedAtInHalfSize(static_cast<std::int64_t>(CountOf(pixels))) ? 2 : 1;
    const focus::LuminancePlane plane(pixels.data, pixels.format, pixels.pitch, pixels.width, pixels.height, step);
    focus::EstRect rect = {};
    focus.GetEstRect(rect.left, rect.top, rect.right, rect.bottom);
    rect = focus::TrimBottom(rect, plane.Width(), plane.Height());
    const double measured = std::max(1.0, double(rect.right - rect.left - 2) * double(rect.bottom - rect.top - 2));
    DegreeCosts means;
    std::ranges::transform(
        focus::MotionCosts(plane.Samples(), plane.Width(), rect), means.begin(), [&](const focus::MotionCost& cost) {
            return (static_cast<double>(cost.whole) + static_cast<double>(cost.fraction) * 0x1p-29) / measured;
        });
    return means;
}

} // namespace

MotionGuess GuessMotion(const PackedPixels& pixels, DegreeCosts* costs) {
    CImageFocus focus;
    focus.SetSize(pixels.width, pixels.height);
    const auto start = std::chrono::steady_clock::now();
    const int degree = focus.GuessMotionDegree(pixels.data, pixels.format, pixels.pitch);
    const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - start;
    if (costs) {
        *costs = CostsOf(focus, pixels);
    }
    return {degree, RegionOf(focus, pixels), taken.count()};
}

std::string Describe(const Region& region) {
    return "columns " + std::to_string(region.left) + " to " + std::to_string(region.right - 1) + " and rows " +
           std::to_string(region.top) + " to " + std::to_string(region.bottom - 1);
}

std::int64_t GuessWorkingBytes(const PictureShape& shape) {
    // The luminance at full size, and the sums of all blocks of 8 by 8.
    return 2 * shape.Pixels();
}

std::string GuessMisfit(const PictureShape& shape) {
    const int smallest = kSmallestMeasured * (IsLookedAtInHalfSize(shape.Pixels()) ? 2 : 1);
    return shape.SmallerSide() >= smallest
               ? ""
               : "has a side of " + std::to_string(shape.SmallerSide()) + " pixels; a direction can be guessed from " +
                     std::to_string(smallest) + " on";
}

} // namespace cli
