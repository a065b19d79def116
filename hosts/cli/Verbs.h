// The verbs of the command as data: what each is called, which options it takes and what it does. The parser, the help,
// the manual page and what shells complete are all made from this table; a new operation is a row here and a function
// beside it.
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

/// One of some words, stored as its place among them; a field outside them has no default.
struct Choice {
    int Settings::*field;
    std::vector<std::string> words;
};

/// The name of a file or folder.
struct FileName {
    std::string Settings::*field;
    const char* ending = ""; ///< it must have
};

/// Any other text, read by a function that throws `UsageError` naming the option where it does not suit.
struct ParsedText {
    void (*parse)(Settings& settings, const std::string& option, const std::string& text);
    const char* initial;                 ///< what the default would be written as; empty where there is none
    std::vector<std::string> words = {}; ///< it takes, for a shell to complete
};

/// Asks for the help, before anything else is looked at.
struct Help {};

/// A flag is a bool; the vector takes the names of the pictures.
using Target = std::variant<Help, WholeNumber, Choice, FileName, ParsedText, bool Settings::*,
                            std::vector<std::string> Settings::*>;

struct OptionRow {
    const char* name;    ///< "--radius", "-o,--output", or "IN" for the pictures themselves
    const char* metavar; ///< what stands for its value in help; empty for a flag, and for a choice, whose words stand
    const char* help;    ///< range and default of a whole number are added by the parser
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

/// The options that stand in the place of a verb.
std::span<const OptionRow> GeneralOptions();

/// "OPTION VALUE is too large for this picture; give at most LARGEST", or empty if it is not.
std::string SideMisfit(const char* option, int value, int largest);

/// The verb of this name, or null.
const Verb* FindVerb(const std::string& name);

/// "blur, motion-blur, ..." with `between` in place of the commas.
std::string VerbNames(const char* between = ", ");

bool IsFlag(const OptionRow& row);
bool IsPictures(const OptionRow& row);
bool TakesPictures(const Verb& verb);

/// The option's first name of several letters, such as "--output".
std::string LongName(const OptionRow& row);

/// What the option takes when nothing is given, as it would be written; empty where it is required or takes nothing.
std::string DefaultOf(const OptionRow& row);

} // namespace cli
