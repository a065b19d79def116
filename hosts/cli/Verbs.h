// The verbs of the command as data: what each is called, which options it takes and what it does. The parser, the help
// and the manual page are all made from this table; a new operation is a row here and a function beside it.
#pragma once

#include "Memory.h"
#include "PackedPixels.h"
#include "Report.h"
#include "Settings.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace cli {

/// A whole number from `low` to `high`.
struct WholeNumber {
    int Settings::*field;
    int low;
    int high;
};

/// Any other text, read by a function that throws `UsageError` naming the option where it does not suit.
struct ParsedText {
    void (*parse)(Settings& settings, const std::string& option, const std::string& text);
    const char* initial; ///< what the default would be written as; empty where there is none
};

using Target = std::variant<WholeNumber, ParsedText, bool Settings::*, std::string Settings::*,
                            std::vector<std::string> Settings::*>;

struct OptionRow {
    const char* name; ///< "--radius", "-o,--output", or "IN" for the pictures themselves
    const char* metavar;
    const char* help; ///< range and default of a whole number are added by the parser
    Target target;
    bool required = false;
};

/// An operation on the pixels of one picture.
struct PixelOperation {
    /// Works in place.
    Report (*apply)(const Settings& settings, const PackedPixels& pixels);

    /// Says why a picture of this shape does not suit the settings; empty if it does.
    std::string (*misfit)(const Settings& settings, const PictureShape& shape);

    /// Bytes the library allocates meanwhile for a picture of this shape.
    std::int64_t (*workingBytes)(const Settings& settings, const PictureShape& shape);

    /// What the user should know about these settings whatever the picture; empty for nothing.
    std::string (*caution)(const Settings& settings);

    /// Works on the luminance, and the result is one grey picture without alpha.
    bool luminanceAlone = false;
};

struct Verb {
    const char* name;
    const char* summary;
    std::vector<OptionRow> options;
    std::variant<PixelOperation, int (*)(const Settings&)> action; ///< a function prints and returns the exit status
};

std::span<const Verb> Verbs();

/// "OPTION VALUE is too large for this picture; give at most LARGEST", or empty if it is not.
std::string SideMisfit(const char* option, int value, int largest);

/// The verb of this name, or null.
const Verb* FindVerb(const std::string& name);

/// "blur, motion-blur, ...".
std::string VerbNames();

} // namespace cli
