#include "CostPlot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <sstream>

namespace cli {
namespace {

// In pixels.
constexpr int kSide = 720;
constexpr double kCentre = kSide / 2.0;
constexpr double kInnerRadius = 60.0; // of the lowest cost
constexpr double kOuterRadius = 290.0;
constexpr double kLabelRadius = 320.0;

/// So that the curve stands out from the picture.
constexpr double kPictureBrightness = 0.55;

/// "x y" of the point at this distance from the middle; the picture's rows count downward.
std::string Point(double radius, double degree) {
    const double angle = degree * std::numbers::pi / 180.0;
    std::ostringstream text;
    text << kCentre + radius * std::cos(angle) << ' ' << kCentre - radius * std::sin(angle);
    return text.str();
}

std::string Spoke(double from, double to, double degree) {
    return "<path d=\"M" + Point(from, degree) + "L" + Point(to, degree) + "\"/>";
}

std::string Circle(double radius) {
    return "<circle cx=\"50%\" cy=\"50%\" r=\"" + std::to_string(radius) + "\"/>";
}

std::string Label(double degree) {
    const std::string at = Point(kLabelRadius, degree);
    const std::size_t gap = at.find(' ');
    return "<text x=\"" + at.substr(0, gap) + "\" y=\"" + at.substr(gap + 1) + "\" dy=\"6\">" +
           std::to_string(static_cast<int>(degree)) + "\u00b0</text>";
}

std::string Curve(const DegreeCosts& costs, double lowest, double highest) {
    const double scale = highest > lowest ? (kOuterRadius - kInnerRadius) / (highest - lowest) : 0.0;
    std::string path;
    for (std::size_t degree = 0; degree < costs.size(); ++degree) {
        path += (degree == 0 ? "M" : "L") +
                Point(kInnerRadius + scale * (costs[degree] - lowest), static_cast<double>(degree));
    }
    return "<path d=\"" + path + "Z\"/>";
}

std::string Svg(const MotionGuess& guess, const DegreeCosts& costs) {
    const auto [lowest, highest] = std::ranges::minmax(costs);
    std::string grid = Circle(kInnerRadius) + Circle(kOuterRadius);
    std::string labels;
    for (int degree = 0; degree < 360; degree += 45) {
        grid += Spoke(kInnerRadius, kOuterRadius, degree);
        labels += Label(degree);
    }
    char caption[160];
    std::snprintf(caption, sizeof caption, "degree %d: error %.3f grey levels a pixel; at the outer circle %.3f",
                  guess.degree, lowest, highest);
    const std::string side = std::to_string(kSide);
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + side + "\" height=\"" + side +
           "\" fill=\"none\" font-family=\"sans-serif\" font-size=\"17\">"
           "<g stroke=\"white\" stroke-opacity=\"0.45\">" +
           grid + "</g><g fill=\"white\" text-anchor=\"middle\">" + labels +
           "</g><g stroke=\"#ffb000\" stroke-width=\"2.5\" fill=\"#ffb000\" fill-opacity=\"0.2\">" +
           Curve(costs, lowest, highest) + "</g><g stroke=\"#40e0ff\" stroke-width=\"3\">" +
           Spoke(0.0, kOuterRadius, guess.degree) +
           "</g><rect y=\"688\" width=\"100%\" height=\"32\" fill=\"black\" fill-opacity=\"0.6\"/>"
           "<text x=\"12\" y=\"710\" fill=\"white\">" +
           caption + "</text></svg>";
}

vips::VImage Backdrop(const vips::VImage& picture, const Region& region) {
    vips::VImage shown =
        picture.extract_area(region.left, region.top, region.right - region.left, region.bottom - region.top);
    if (shown.has_alpha()) {
        shown = shown.flatten();
    }
    return (shown.colourspace(VIPS_INTERPRETATION_sRGB)
                .thumbnail_image(kSide, vips::VImage::option()->set("height", kSide)) *
            kPictureBrightness)
        .cast(VIPS_FORMAT_UCHAR)
        .gravity(VIPS_COMPASS_DIRECTION_CENTRE, kSide, kSide)
        .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

} // namespace

void WriteCostPlot(const vips::VImage& picture, const MotionGuess& guess, const DegreeCosts& costs, int descriptor) {
    const std::string svg = Svg(guess, costs); // read from while the plot is written
    const vips::VImage curve = vips::VImage::new_from_buffer(svg, "");
    // Without the picture's metadata, which do not describe the plot.
    Backdrop(picture, guess.region)
        .composite2(curve, VIPS_BLEND_MODE_OVER)
        .flatten()
        .pngsave_target(vips::VTarget::new_to_descriptor(descriptor), vips::VImage::option()->set("strip", true));
}

} // namespace cli
