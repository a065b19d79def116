#include "Denoise.h"

#include "Errors.h"

#include <claribox/CImageDenoiser.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <vector>

namespace cli {
namespace {

constexpr int SmallestMeasured = 96;        // side of the square on which the library measures
constexpr int LargestTooSmall = 8;          // side on which three levels of wavelets leave no band to speak of
constexpr float LargestThreshold = 2040.0f; // no detail of three levels over bytes comes near 8 * 255

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

YuvPlanes ToYuv(const PackedPixels& pixels) {
    YuvPlanes planes(CountOf(pixels));
    ForEachPixel(pixels, [&](int r, int g, int b, std::size_t k) {
        constexpr int middle = 128 << 16;
        planes.y[k] = RoundedByte(Fixed(0.299) * r + Fixed(0.587) * g + Fixed(0.114) * b);
        planes.u[k] = RoundedByte(middle + Fixed(-0.168736) * r + Fixed(-0.331264) * g + Fixed(0.5) * b);
        planes.v[k] = RoundedByte(middle + Fixed(0.5) * r + Fixed(-0.418688) * g + Fixed(-0.081312) * b);
    });
    return planes;
}

void FromYuv(const YuvPlanes& planes, const PackedPixels& pixels) {
    ForEachPixel(pixels, [&](unsigned char& r, unsigned char& g, unsigned char& b, std::size_t k) {
        const int y = planes.y[k] << 16;
        const int u = planes.u[k] - 128;
        const int v = planes.v[k] - 128;
        r = RoundedByte(y + Fixed(1.402) * v);
        g = RoundedByte(y + Fixed(-0.344136) * u + Fixed(-0.714136) * v);
        b = RoundedByte(y + Fixed(1.772) * u);
    });
}

CImageDenoiser SizedFor(const PackedPixels& pixels) {
    CImageDenoiser denoiser;
    denoiser.SetSize(pixels.width, pixels.height);
    return denoiser;
}

std::string Measured(const CImageDenoiser& denoiser) {
    float threshold = 0.0f;
    float second = 0.0f;
    denoiser.GetThreshold(threshold, second);
    char text[128];
    std::snprintf(text, sizeof text, "threshold %.3f", static_cast<double>(threshold));
    if (!denoiser.IsAuto()) {
        return text;
    }
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    denoiser.GetEstRect(left, top, right, bottom);
    return std::string(text) + ", measured on columns " + std::to_string(left) + " to " + std::to_string(right - 1) +
           " and rows " + std::to_string(top) + " to " + std::to_string(bottom - 1);
}

} // namespace

Report DenoisePixels(const Settings& settings, const PackedPixels& pixels) {
    YuvPlanes planes = ToYuv(pixels);
    CImageDenoiser denoiser = SizedFor(pixels);
    denoiser.SetThresholdType(settings.rule);
    denoiser.SetAutoMeasure(!settings.threshold);
    if (settings.threshold) {
        denoiser.SetThreshold(*settings.threshold, -1.0f);
    }
    denoiser.Denoise_YUV(planes.y.data(), planes.u.data(), planes.v.data());
    FromYuv(planes, pixels);
    return {Measured(denoiser)};
}

Report ShowBand(const Settings& settings, const PackedPixels& pixels) {
    YuvPlanes planes = ToYuv(pixels);
    SizedFor(pixels).ShowFreqBand(planes.y.data(), settings.band);
    ForEachPixel(pixels,
                 [&](unsigned char& r, unsigned char& g, unsigned char& b, std::size_t k) { r = g = b = planes.y[k]; });
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
