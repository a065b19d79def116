// The verb `denoise`: colour conversion around the library's denoiser, and how strongly to let it work.
#include "Denoiser.h"
#include "Errors.h"
#include "EveryVerb.h"
#include "NoiseLevel.h"
#include "Yuv.h"

// The command is linked against the library's inner archive for this: measuring alone is not exported.
#include "denoise/NoiseEstimate.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <numeric>
#include <vector>

namespace cli {
namespace {

/// Derived: no detail coefficient of three levels over bytes comes near 8 * 255.
constexpr float kLargestThreshold = 2040.0f;

/// What the measured threshold is multiplied by for each rule, in the order of the library's numbers; the most that it
/// may be of the noise level, where the square it is measured on has texture of its own; and the level up to which a
/// picture counts as clean. Tuned for the PSNR at noise of 0 to 25 on twelve photographs: those of Debian's
/// mate-backgrounds (nature) and lomiri-wallpapers-20.04, reduced to 640 pixels. Larger values blur detail away,
/// smaller ones leave noise. DenoiseTest.cpp pins that clean pictures stay as they are and that noise lessens.
constexpr std::array<float, 3> kRuleFactors = {1.0f, 2.0f, 1.2f};
constexpr double kMostOfNoise = 1.35;
constexpr double kCleanNoise = 1.7;

std::int64_t SumOf(const std::vector<unsigned char>& plane) {
    return std::accumulate(plane.begin(), plane.end(), std::int64_t{0});
}

/// Adds to the pixels `share`, 0 to 1, of their difference from `denoised`. That way the rounding to luminance and
/// chrominance costs nothing where little changes. `before` holds the sums of both chrominance planes, whose means are
/// restored: the library truncates its means of neighbours, which takes about 0.8 of a level away and would tint the
/// picture green.
void AddChange(const YuvPlanes& denoised, double share, const std::array<std::int64_t, 2>& before,
               const PackedPixels& pixels) {
    const double one = share * 65536.0; // all with 16 fractional bits
    const double count = static_cast<double>(CountOf(pixels));
    const auto weight = static_cast<std::int64_t>(std::lround(one));
    const std::int64_t lostU = std::llround(one * static_cast<double>(before[0] - SumOf(denoised.u)) / count);
    const std::int64_t lostV = std::llround(one * static_cast<double>(before[1] - SumOf(denoised.v)) / count);
    const auto add = [](unsigned char& sample, std::int64_t change, std::int64_t term) {
        sample = RoundedByte((sample << 16) + change + (term >> 16));
    };
    ForEachPixel(pixels, [&](unsigned char& blue, unsigned char& green, unsigned char& red, std::size_t k) {
        const Yuv yuv(blue, green, red);
        const std::int64_t y = weight * (denoised.y[k] - yuv.y);
        const ColourTerms terms(weight * (denoised.u[k] - yuv.u) + lostU, weight * (denoised.v[k] - yuv.v) + lostV);
        add(blue, y, terms.blue);
        add(green, y, terms.green);
        add(red, y, terms.red);
    });
}

std::string Formatted(const char* format, double number) {
    char text[64];
    std::snprintf(text, sizeof text, format, number);
    return text;
}

std::string OnSquare(int left, int top, int right, int bottom) {
    return "measured on columns " + std::to_string(left) + " to " + std::to_string(right - 1) + " and rows " +
           std::to_string(top) + " to " + std::to_string(bottom - 1);
}

/// The library's own result: its planes are converted back as they are.
Report DenoiseExactly(const Settings& settings, const PackedPixels& pixels) {
    YuvPlanes planes = ToYuv(pixels);
    CImageDenoiser denoiser = DenoiserFor(pixels);
    denoiser.SetThresholdType(settings.rule);
    denoiser.SetAutoMeasure(!settings.threshold);
    if (settings.threshold) {
        denoiser.SetThreshold(*settings.threshold, -1.0f);
    }
    denoiser.Denoise_YUV(planes.y.data(), planes.u.data(), planes.v.data());
    FromYuv(planes, pixels);
    float threshold = 0.0f;
    float second = 0.0f;
    denoiser.GetThreshold(threshold, second);
    const std::string text = Formatted("threshold %.3f", static_cast<double>(threshold));
    if (settings.threshold) {
        return {text};
    }
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    denoiser.GetEstRect(left, top, right, bottom);
    return {text + ", " + OnSquare(left, top, right, bottom)};
}

/// How strongly to denoise, and what to report of it.
struct Strength {
    float threshold;
    double share; ///< of the change that is applied
    std::string text;
};

/// By the noise measured, less where there is little: a part of what is measured is the picture's own detail, and the
/// share of power above that of a clean picture is noise, as in a Wiener filter.
Strength MeasuredStrength(const YuvPlanes& planes, int rule, const PackedPixels& pixels) {
    const double noise = NoiseLevel(planes.y, pixels.width, pixels.height);
    const std::string told = Formatted("noise %.3f: ", noise);
    if (noise <= kCleanNoise) {
        return {0.0f, 0.0, told + "so clean that it is left as it is"};
    }
    const denoise::SquareCorner square = denoise::FlattestSquare(planes.y.data(), pixels.width, pixels.height, {0, 0});
    const float measured = denoise::NoiseIn(planes.y.data(), pixels.width, square);
    const float threshold =
        std::min(measured, static_cast<float>(kMostOfNoise * noise)) * kRuleFactors.at(static_cast<std::size_t>(rule));
    const double share = 1.0 - kCleanNoise * kCleanNoise / (noise * noise);
    return {threshold, share,
            told + Formatted("threshold %.3f, ", static_cast<double>(threshold)) +
                OnSquare(square.left, square.top, square.left + DnEstSize, square.top + DnEstSize) +
                Formatted(", %.0f%% of the change applied", 100.0 * share)};
}

Report Denoise(const Settings& settings, const PackedPixels& pixels) {
    if (settings.exact) {
        return DenoiseExactly(settings, pixels);
    }
    YuvPlanes planes = ToYuv(pixels);
    const Strength strength =
        settings.threshold
            ? Strength{*settings.threshold, 1.0, Formatted("threshold %.3f", static_cast<double>(*settings.threshold))}
            : MeasuredStrength(planes, settings.rule, pixels);
    if (strength.share > 0.0) {
        const std::array<std::int64_t, 2> before = {SumOf(planes.u), SumOf(planes.v)};
        CImageDenoiser denoiser = DenoiserFor(pixels);
        denoiser.SetThresholdType(settings.rule);
        denoiser.SetAutoMeasure(false);
        denoiser.SetThreshold(strength.threshold, -1.0f);
        denoiser.Denoise_YUV(planes.y.data(), planes.u.data(), planes.v.data());
        AddChange(planes, strength.share, before, pixels);
    }
    return {strength.text};
}

std::string Misfit(const Settings& settings, const PictureShape& shape) {
    const int smallerSide = shape.SmallerSide();
    if (smallerSide < DnMinSide || settings.threshold || smallerSide >= DnEstSize) {
        return WaveletMisfit(shape);
    }
    const std::string least = std::to_string(DnEstSize);
    return "is smaller than the " + least + " by " + least +
           " pixels on which noise is measured; give --threshold a number, such as 5";
}

void ParseThreshold(Settings& settings, const std::string& option, const std::string& text) {
    if (text == "auto") {
        settings.threshold.reset();
        return;
    }
    float value = 0.0f;
    const char* const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, value);
    if (error != std::errc{} || end != last || !(value >= 0.0f && value <= kLargestThreshold)) {
        throw UsageError(option + " takes auto or a number from 0 to " +
                         std::to_string(static_cast<int>(kLargestThreshold)) + ", not '" + text + "'");
    }
    settings.threshold = value;
}

std::string RuleHelp() {
    const auto factor = [](std::size_t rule) { return Formatted("%g", static_cast<double>(kRuleFactors.at(rule))); };
    return "how details above the threshold are kept; auto multiplies what it measures by " + factor(0) +
           " for soft, " + factor(1) + " for hard and " + factor(2) +
           " for garrote, the best on twelve photographs with noise of 5 to 25";
}

} // namespace

Verb DenoiseVerb() {
    const std::string side = std::to_string(DnEstSize);
    return {"denoise", "remove noise from pictures",
            WithPictureOptions(
                {{"--threshold", "auto|T",
                  "strength of the noise in grey levels, or auto to measure it, which takes a picture of at least " +
                      side + " by " + side + " pixels; the less noise is measured, the less is changed",
                  ParsedText{ParseThreshold, "auto", {"auto"}}},
                 {"--rule", "", RuleHelp(), Choice{&Settings::rule, {"soft", "hard", "garrote"}}}}),
            PixelOperation{Denoise, Misfit, DenoiserWorkingBytes<1>}};
}

} // namespace cli
