#include "Verbs.h"

#include "BlurLimit.h"
#include "Completion.h"
#include "Denoise.h"
#include "Errors.h"
#include "Frequency.h"
#include "GuessReport.h"
#include "Info.h"
#include "ParseNumber.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace cli {
namespace {

constexpr int LargestQuality = 100;
constexpr int LargestJobs = 256;
constexpr int LargestDeblurRadius = 10;
constexpr int LargestBlurRadius = 50;

/// The kernel's (2 * length + 1)^2 elements are counted in 32 bits.
constexpr int LargestLength = 23169;

constexpr int LargestDegree = 360;

constexpr int LargestBand = 2;

std::string RadiusMisfit(const Settings& settings, const PictureShape& shape) {
    return SideMisfit("--radius", settings.radius, shape.SmallerSide());
}

std::string LengthMisfit(const Settings& settings, const PictureShape& shape) {
    return SideMisfit("--length", settings.length, shape.SmallerSide() - 1);
}

/// Three byte planes, and a kernel of the given half-size as floats and as integers.
std::int64_t PlanesAndKernel(std::int64_t pixels, std::int64_t half) {
    const std::int64_t side = 2 * half + 1;
    return 3 * pixels + 2 * 4 * side * side;
}

std::int64_t BlurWorkingBytes(const Settings& settings, const PictureShape& shape) {
    constexpr std::int64_t copy = 4; // bytes a pixel: where it is close whether a sum wraps, a copy is blurred
    return copy * shape.Pixels() + PlanesAndKernel(shape.Pixels(), settings.radius);
}

std::int64_t RadiusWorkingBytes(const Settings& settings, const PictureShape& shape) {
    return PlanesAndKernel(shape.Pixels(), settings.radius);
}

std::int64_t LengthWorkingBytes(const Settings& settings, const PictureShape& shape) {
    return PlanesAndKernel(shape.Pixels(), settings.length);
}

std::string NoCaution(const Settings&) {
    return {};
}

/// From radius 6 on the sum under the kernel can pass 2^31, which the library defines to wrap.
std::string BlurCaution(const Settings& settings) {
    if (!settings.exact || settings.radius <= SafeBlurRadius) {
        return {};
    }
    const std::string side = std::to_string(2 * settings.radius + 1);
    char mean[16];
    std::snprintf(mean, sizeof mean, "%.1f", WrappingMean(settings.radius));
    return "--radius " + std::to_string(settings.radius) + ": where the mean of the " + side + " by " + side +
           " samples around a pixel passes " + mean +
           ", its sum wraps at 32 bits and it turns black or takes a random level";
}

CImageFocus SizedFor(const PackedPixels& pixels) {
    CImageFocus focus;
    focus.SetSize(pixels.width, pixels.height);
    return focus;
}

Report Blur(const Settings& settings, const PackedPixels& pixels) {
    if (!settings.exact && settings.radius > SafeBlurRadius && BlurWraps(pixels, settings.radius)) {
        throw PictureError(
            "--radius " + std::to_string(settings.radius) +
            " would turn bright areas of this picture black, because sums wrap at 32 bits; give at most " +
            std::to_string(LargestUnwrappedRadius(pixels, settings.radius - 1)) + ", or --exact to do it anyway");
    }
    CImageFocus focus = SizedFor(pixels);
    focus.SetRadius(settings.radius);
    focus.Blur(pixels.data, pixels.format, pixels.pitch);
    return {};
}

Report MotionBlur(const Settings& settings, const PackedPixels& pixels) {
    CImageFocus focus = SizedFor(pixels);
    focus.SetMotionLength(settings.length);
    focus.SetMotionDegree(settings.degree);
    focus.MotionBlur(pixels.data, pixels.format, pixels.pitch);
    return {};
}

Report DeBlur(const Settings& settings, const PackedPixels& pixels) {
    CImageFocus focus = SizedFor(pixels);
    focus.SetRadius(settings.radius);
    focus.DeBlur(pixels.data, pixels.format, pixels.pitch);
    return {};
}

void ParseDegreeOrAuto(Settings& settings, const std::string& option, const std::string& text) {
    settings.guessDegree = text == "auto";
    if (settings.guessDegree) {
        return;
    }
    const std::optional<int> degree = ParseWholeNumber(text, -LargestDegree, LargestDegree);
    if (!degree) {
        throw UsageError(option + " takes auto or a whole number from " + std::to_string(-LargestDegree) + " to " +
                         std::to_string(LargestDegree) + ", not '" + text + "'");
    }
    settings.degree = *degree;
}

OptionRow HelpRow() {
    return {"-h,--help", "", "print this help", Help{}};
}

/// Whether it can be written is known when libvips is.
void ParseFormat(Settings& settings, const std::string&, const std::string& text) {
    settings.format = text.starts_with('.') ? text.substr(1) : text;
}

OptionRow Quiet() {
    return {"-q,--quiet", "", "print errors only: no notes, warnings, progress or summary", &Settings::quiet};
}

OptionRow Inputs() {
    return {"IN", "PICTURE",
            "pictures to read: JPEG, PNG, TIFF, WebP, GIF, HEIF, AVIF, JPEG XL, PPM, Radiance; - for standard input",
            &Settings::inputs, true};
}

/// The options of every verb that writes pictures, after its own.
std::vector<OptionRow> WithPictureOptions(std::vector<OptionRow> own) {
    const std::vector<OptionRow> common = {
        Inputs(),
        {"-o,--output", "OUT",
         "file to write; or the folder, as it is for several pictures; or a template such as 'out/{name}-sharp.{ext}'; "
         "- for standard output",
         FileName{&Settings::output}, true},
        {"--format", "ENDING", "format of the outputs by its ending, such as jpg, in the place of the inputs'",
         ParsedText{ParseFormat, "", {"jpg", "png", "tif", "webp", "gif", "heic", "avif", "jxl", "ppm"}}},
        {"--quality", "N", "quality of JPEG and other lossy formats",
         WholeNumber{&Settings::quality, 1, LargestQuality}},
        {"--jobs", "N", "pictures at once, fewer where memory is short; 0 for one a processor",
         WholeNumber{&Settings::jobs, 0, LargestJobs}},
        {"--force", "", "replace existing files, though never one of the pictures read", &Settings::force},
        {"--strict", "",
         "refuse a picture that is damaged or loses something, such as 16 bits reduced to 8 or its EXIF data",
         &Settings::strict},
        {"--exact", "", "give the library's own result, byte for byte, without what the command adds to it",
         &Settings::exact},
        {"--verbose", "", "tell what was measured on each picture", &Settings::verbose},
        Quiet(),
        HelpRow(),
    };
    own.insert(own.end(), common.begin(), common.end());
    return own;
}

const std::vector<Verb>& Table() {
    static const std::vector<Verb> table = {
        {"blur", "blur pictures",
         WithPictureOptions({{"--radius", "N", "radius of the blur in pixels, at most the picture's smaller side",
                              WholeNumber{&Settings::radius, 1, LargestBlurRadius}}}),
         PixelOperation{Blur, RadiusMisfit, BlurWorkingBytes, BlurCaution}},
        {"motion-blur", "smear pictures along a line, as a moving camera does",
         WithPictureOptions({{"--length", "N", "length of the motion in pixels, below the picture's smaller side",
                              WholeNumber{&Settings::length, 1, LargestLength}},
                             {"--degree", "N", "direction of the camera's motion, counter-clockwise from the right",
                              WholeNumber{&Settings::degree, -LargestDegree, LargestDegree}}}),
         PixelOperation{MotionBlur, LengthMisfit, LengthWorkingBytes, NoCaution}},
        {"deblur", "sharpen out-of-focus pictures",
         WithPictureOptions({{"--radius", "N", "radius of the defocus in pixels, at most the picture's smaller side",
                              WholeNumber{&Settings::radius, 1, LargestDeblurRadius}}}),
         PixelOperation{DeBlur, RadiusMisfit, RadiusWorkingBytes, NoCaution}},
        {"demotion-blur", "undo the smear of motion along a line",
         WithPictureOptions(
             {{"--length", "N", "length of the motion in pixels, at most 49 more than half the picture's smaller side",
               WholeNumber{&Settings::length, 1, LargestLength}},
              {"--degree", "N|auto",
               "direction in which points are smeared, counter-clockwise from the right, which is motion-blur's "
               "turned by 180; -360 to 360, or auto to take what guess-motion says",
               ParsedText{ParseDegreeOrAuto, "30", {"auto"}}}}),
         PixelOperation{DeMotionBlurPixels, DeMotionBlurMisfit, DeMotionBlurWorkingBytes, NoCaution}},
        {"guess-motion",
         "guess in which direction pictures are smeared, from their busiest part",
         {Inputs(),
          {"--json", "", "print a JSON object a picture instead of text", &Settings::json},
          {"--plot", "FILE.png",
           "draw how badly each direction predicts the pixels, over the part that was looked at; for one picture",
           FileName{&Settings::output, ".png"}},
          {"--force", "", "replace an existing plot, though never the picture read", &Settings::force},
          Quiet(),
          HelpRow()},
         PrintMotionGuesses},
        {"denoise", "remove noise from pictures",
         WithPictureOptions(
             {{"--threshold", "auto|T",
               "strength of the noise in grey levels, or auto to measure it, which takes a picture of "
               "at least 96 by 96 pixels; the less noise is measured, the less is changed",
               ParsedText{ParseThreshold, "auto", {"auto"}}},
              {"--rule", "",
               "how details above the threshold are kept; auto multiplies what it measures by 1 for soft, "
               "2 for hard and 1.2 for garrote, the best on twelve photographs with noise of 5 to 25",
               Choice{&Settings::rule, {"soft", "hard", "garrote"}}}}),
         PixelOperation{DenoisePixels, DenoiseMisfit, DenoiseWorkingBytes, NoCaution}},
        {"band", "show one range of frequencies of pictures, in grey",
         WithPictureOptions({{"--band", "N", "0 the finest detail, 1 the middle, 2 the coarse rest",
                              WholeNumber{&Settings::band, 0, LargestBand}, true}}),
         PixelOperation{ShowBand, BandMisfit, DenoiseWorkingBytes, NoCaution}},
        {"spectrum", "show the power spectrum of pictures: of their luminance, on a logarithmic scale, in grey",
         WithPictureOptions(
             {{"--centred,--centered", "", "put the zero frequency into the middle instead of the top left corner",
               &Settings::centred}}),
         PixelOperation{ShowSpectrum, SpectrumMisfit, SpectrumWorkingBytes, NoCaution, true}},
        {"info",
         "print the version and what is known of the processor",
         {{"--json", "", "print a JSON object instead of text", &Settings::json}, HelpRow()},
         PrintInfo},
    };
    return table;
}

} // namespace

std::string SideMisfit(const char* option, int value, int largest) {
    if (value <= largest) {
        return {};
    }
    return std::string(option) + " " + std::to_string(value) + " is too large for this picture; " +
           (largest > 0 ? "give at most " + std::to_string(largest) : "no value fits so small a picture");
}

std::span<const Verb> Verbs() {
    return Table();
}

std::span<const OptionRow> GeneralOptions() {
    static const std::vector<OptionRow> rows = {
        {"-V,--version", "", "print the version", &Settings::version},
        {"--man", "", "print the manual page, for man -l", &Settings::manPage},
        {"--completion", "", "print what completes the command's words in this shell",
         Choice{&Settings::completion, CompletionShells()}},
        HelpRow(),
    };
    return rows;
}

const Verb* FindVerb(const std::string& name) {
    const auto found = std::ranges::find_if(Table(), [&](const Verb& verb) { return name == verb.name; });
    return found == Table().end() ? nullptr : &*found;
}

std::string VerbNames(const char* between) {
    std::string names;
    for (const Verb& verb : Table()) {
        names += (names.empty() ? "" : between) + std::string(verb.name);
    }
    return names;
}

bool IsFlag(const OptionRow& row) {
    return std::holds_alternative<bool Settings::*>(row.target) || std::holds_alternative<Help>(row.target);
}

bool IsPictures(const OptionRow& row) {
    return std::holds_alternative<std::vector<std::string> Settings::*>(row.target);
}

bool TakesPictures(const Verb& verb) {
    return std::ranges::any_of(verb.options, IsPictures);
}

std::string LongName(const OptionRow& row) {
    const std::string names = row.name;
    const std::size_t start = names.find("--");
    return start == std::string::npos ? names : names.substr(start, names.find(',', start) - start);
}

std::string DefaultOf(const OptionRow& row) {
    if (row.required) {
        return {};
    }
    if (const auto* number = std::get_if<WholeNumber>(&row.target)) {
        return std::to_string(Settings{}.*number->field);
    }
    if (const auto* choice = std::get_if<Choice>(&row.target)) {
        const auto place = static_cast<std::size_t>(Settings{}.*choice->field);
        return place < choice->words.size() ? choice->words[place] : "";
    }
    const auto* parsed = std::get_if<ParsedText>(&row.target);
    return parsed ? parsed->initial : "";
}

} // namespace cli
