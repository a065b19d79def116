// Options as data: what each is called, takes and stores. The parser, the help, the manual page and what shells
// complete are all made from these rows.
#pragma once

#include "Settings.h"

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
    std::string initial;                 ///< what the default would be written as; empty where there is none
    std::vector<std::string> words = {}; ///< it takes, for a shell to complete
};

/// Asks for the help, before anything else is looked at.
struct AskForHelp {};

/// A flag is a bool; the vector takes the names of the pictures.
using Target = std::variant<AskForHelp, WholeNumber, Choice, FileName, ParsedText, bool Settings::*,
                            std::vector<std::string> Settings::*>;

struct OptionRow {
    const char* name;    ///< "--radius", "-o,--output", or "IN" for the pictures themselves
    const char* metavar; ///< what stands for its value in help; empty for a flag, and for a choice, whose words stand
    std::string help;    ///< range and default of a whole number are added by the parser
    Target target;
    bool required = false;
};

bool IsFlag(const OptionRow& row);
bool IsPictures(const OptionRow& row);

/// The option's first name of several letters, such as "--output".
std::string LongName(const OptionRow& row);

/// What the option takes when nothing is given, as it would be written; empty where it is required or takes nothing.
std::string DefaultOf(const OptionRow& row);

// Rows that several verbs share.

OptionRow Help();
OptionRow Quiet();

/// The names of the pictures.
OptionRow Inputs();

/// The options of every verb that writes pictures, after its own.
std::vector<OptionRow> WithPictureOptions(std::vector<OptionRow> own);

} // namespace cli
