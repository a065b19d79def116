#include "Options.h"

namespace cli {
namespace {

constexpr int kLargestQuality = 100; // of libvips' writers
constexpr int kLargestJobs = 256;    // more than there are processors to use them

/// Whether it can be written is known when libvips is.
void ParseFormat(Settings& settings, const std::string&, const std::string& text) {
    settings.format = text.starts_with('.') ? text.substr(1) : text;
}

} // namespace

bool IsFlag(const OptionRow& row) {
    return std::holds_alternative<bool Settings::*>(row.target) || std::holds_alternative<AskForHelp>(row.target);
}

bool IsPictures(const OptionRow& row) {
    return std::holds_alternative<std::vector<std::string> Settings::*>(row.target);
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

OptionRow Help() {
    return {"-h,--help", "", "print this help", AskForHelp{}};
}

OptionRow Quiet() {
    return {"-q,--quiet", "", "print errors only: no notes, warnings, progress or summary", &Settings::quiet};
}

OptionRow Inputs() {
    return {"IN", "PICTURE",
            "pictures to read: JPEG, PNG, TIFF, WebP, GIF, HEIF, AVIF, JPEG XL, PPM, Radiance; - for standard input",
            &Settings::inputs, true};
}

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
         WholeNumber{&Settings::quality, 1, kLargestQuality}},
        {"--jobs", "N", "pictures at once, fewer where memory is short; 0 for one a processor",
         WholeNumber{&Settings::jobs, 0, kLargestJobs}},
        {"--force", "", "replace existing files, though never one of the pictures read", &Settings::force},
        {"--strict", "",
         "refuse a picture that is damaged or loses something, such as 16 bits reduced to 8 or its EXIF data",
         &Settings::strict},
        {"--exact", "", "give the library's own result, byte for byte, without what the command adds to it",
         &Settings::exact},
        {"--verbose", "", "tell what was measured on each picture", &Settings::verbose},
        Quiet(),
        Help(),
    };
    own.insert(own.end(), common.begin(), common.end());
    return own;
}

} // namespace cli
