#include "Denoise.h"

#include "Errors.h"
#include "NoiseLevel.h"

#include <claribox/CImageDenoiser.h>

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

constexpr int SmallestMeasured = 96;        // side of the square on which the library measures
constexpr int LargestTooSmall = 8;          // side on which three levels of wavelets leave no band to speak of
constexpr float LargestThreshold = 2040.0f; // no detail of three levels over bytes comes near 8 * 255

/// What the measured threshold is multiplied by for each rule, in the order of the library's numbers; the most that it
/// may be of the noise level, where the square it is measured on has texture of its own; and the level up to which a
/// picture counts as clean. Tuned for the PSNR at noise of 0 to 25 on twelve photographs: those of Debian's
/// mate-backgrounds (nature) and lomiri-wallpapers-20.04, reduced to 640 pixels.
constexpr std::array<float, 3> RuleFactors = {1.0f, 2.0f, 1.2f};
constexpr double MostOfNoise = 1.35;
constexpr double CleanNoise = 1.7;

/// Full-size planes of luminance and chrominance.
struct YuvPlanes {
    explicit YuvPlanes(std::size_t samples) : y(samples), u(samples), v(samples) {}

    std::vector<unsigned char> y;
    std::vector<unsigned char> u;
    std::vector<unsigned char> v;
};

/// A sum of products with 16 fractional bits, rounded to the nearest byte.
unsigned char RoundedByte(int sum) {
    return static_cast<unsigned char>(std::clamp((sum + (1 << 15)) >> 16, 0, 255));
}

constexpr int Fixed(double factor) {
    return static_cast<int>(factor * 65536.0 + (factor < 0.0 ? -0.5 : 0.5));
}

struct Yuv {
    Yuv(int r, int g, int b)
        : y(RoundedByte(Fixed(0.299) * r + Fixed(0.587) * g + Fixed(0.114) * b)),
          u(RoundedByte(Middle + Fixed(-0.168736) * r + Fixed(-0.331264) * g + Fixed(0.5) * b)),
          v(RoundedByte(Middle + Fixed(0.5) * r + Fixed(-0.418688) * g + Fixed(-0.081312) * b)) {}

    static constexpr int Middle = 128 << 16;

    unsigned char y;
    unsigned char u;
    unsigned char v;
};

YuvPlanes ToYuv(const PackedPixels& pixels) {
    YuvPlanes planes(CountOf(pixels));
    ForEachPixel(pixels, [&](int b, int g, int r, std::size_t k) {
        const Yuv yuv(r, g, b);
        planes.y[k] = yuv.y;
        planes.u[k] = yuv.u;
        planes.v[k] = yuv.v;
    });
    return planes;
}

void FromYuv(const YuvPlanes& planes, const PackedPixels& pixels) {
    ForEachPixel(pixels, [&](unsigned char& b, unsigned char& g, unsigned char& r, std::size_t k) {
        const int y = planes.y[k] << 16;
        const int u = planes.u[k] - 128;
        const int v = planes.v[k] - 128;
        r = RoundedByte(y + Fixed(1.402) * v);
        g = RoundedByte(y + Fixed(-0.344136) * u + Fixed(-0.714136) * v);
        b = RoundedByte(y + Fixed(1.772) * u);
    });
}

std::int64_t SumOf(const std::vector<unsigned char>& plane) {
    return std::accumulate(plane.begin(), plane.end(), std::int64_t{0});
}

/// Adds `share`, 0 to 1, of what `denoised` differs from the pixels to them. So rounding to luminance and chrominance
/// costs nothing where little changes. Chrominance gets the mean back that the library's truncated means of neighbours
/// take, in `before` the sums of both planes: about 0.8 of a level, which would tint the picture green.
void AddChange(const YuvPlanes& denoised, double share, const std::array<std::int64_t, 2>& before,
               const PackedPixels& pixels) {
    const double one = share * 65536.0; // all with 16 fractional bits
    const double count = static_cast<double>(CountOf(pixels));
    const auto weight = static_cast<std::int64_t>(std::lround(one));
    const std::int64_t lostU = std::llround(one * static_cast<double>(before[0] - SumOf(denoised.u)) / count);
    const std::int64_t lostV = std::llround(one * static_cast<double>(before[1] - SumOf(denoised.v)) / count);
    const auto add = [](unsigned char& sample, std::int64_t change, std::int64_t products) {
        sample = RoundedByte(static_cast<int>((sample << 16) + change + (products >> 16)));
    };
    ForEachPixel(pixels, [&](unsigned char& b, unsigned char& g, unsigned char& r, std::size_t k) {
        const Yuv yuv(r, g, b);
        const std::int64_t y = weight * (denoised.y[k] - yuv.y);
        const std::int64_t u = weight * (denoised.u[k] - yuv.u) + lostU;
        const std::int64_t v = weight * (denoised.v[k] - yuv.v) + lostV;
        add(r, y, Fixed(1.402) * v);
        add(g, y, Fixed(-0.344136) * u + Fixed(-0.714136) * v);
        add(b, y, Fixed(1.772) * u);
    });
}

CImageDenoiser SizedFor(const PackedPixels& pixels) {
    CImageDenoiser denoiser;
    denoiser.SetSize(pixels.width, pixels.height);
    return denoiser;
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

/// The library's own result.
Report DenoiseExactly(const Settings& settings, const PackedPixels& pixels) {
    YuvPlanes planes = ToYuv(pixels);
    CImageDenoiser denoiser = SizedFor(pixels);
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

/// How strongly to denoise, and what to tell of it.
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
    if (noise <= CleanNoise) {
        return {0.0f, 0.0, told + "so clean that it is left as it is"};
    }
    const denoise::SquareCorner square = denoise::FlattestSquare(planes.y.data(), pixels.width, pixels.height, {0, 0});
    const float measured = denoise::NoiseIn(planes.y.data(), pixels.width, square);
    const float threshold =
        std::min(measured, static_cast<float>(MostOfNoise * noise)) * RuleFactors.at(static_cast<std::size_t>(rule));
    const double share = 1.0 - CleanNoise * CleanNoise / (noise * noise);
    return {threshold, share,
            told + Formatted("threshold %.3f, ", static_cast<double>(threshold)) +
                OnSquare(square.left, square.top, square.left + SmallestMeasured, square.top + SmallestMeasured) +
                Formatted(", %.0f%% of the change applied", 100.0 * share)};
}

} // namespace

Report DenoisePixels(const Settings& settings, const PackedPixels& pixels) {
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
        CImageDenoiser denoiser = SizedFor(pixels);
        denoiser.SetThresholdType(settings.rule);
        denoiser.SetAutoMeasure(false);
        denoiser.SetThreshold(strength.threshold, -1.0f);
        denoiser.Denoise_YUV(planes.y.data(), planes.u.data(), planes.v.data());
        AddChange(planes, strength.share, before, pixels);
    }
    return {strength.text};
}

Report ShowBand(const Settings& settings, const PackedPixels& pixels) {
    YuvPlanes planes = ToYuv(pixels);
    SizedFor(pixels).ShowFreqBand(planes.y.data(), settings.band);
    ForEachPixel(pixels,
                 [&](unsigned char& b, unsigned char& g, unsigned char& r, std::size_t k) { b = g = r = planes.y[k]; });
    return {};
}

std::string BandMisfit(const Settings&, const PictureShape& shape) {
    const int smallerSide = shape.SmallerSide();
    return smallerSide > LargestTooSmall
               ? ""
               : "has a side of " + std::to_string(smallerSide) + " pixels; take a picture of " +
                     std::to_string(LargestTooSmall + 1) + " or more on both sides";
}

std::string DenoiseMisfit(const Settings& settings, const PictureShape& shape) {
    const int smallerSide = shape.SmallerSide();
    if (smallerSide <= LargestTooSmall || settings.threshold || smallerSide >= SmallestMeasured) {
        return BandMisfit(settings, shape);
    }
    const std::string least = std::to_string(SmallestMeasured);
    return "is smaller than the " + least + " by " + least +
           " pixels on which noise is measured; give --threshold a number, such as 5";
}

std::int64_t DenoiseWorkingBytes(const Settings&, const PictureShape& shape) {
    constexpr std::int64_t scratch = std::int64_t{2} << 20;
    return (3 + 2 * 4) * shape.Pixels() + scratch;
}

void ParseThreshold(Settings& settings, const std::string& option, const std::string& text) {
    if (text == "auto") {
        settings.threshold.reset();
        return;
    }
    float value = 0.0f;
    const char* const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, value);
    if (error != std::errc{} || end != last || !(value >= 0.0f && value <= LargestThreshold)) {
        throw UsageError(option + " takes auto or a number from 0 to " +
                         std::to_string(static_cast<int>(LargestThreshold)) + ", not '" + text + "'");
    }
    settings.threshold = value;
}

} // namespace cli
