// The texts made from the table of verbs: help lines and the manual page.
#pragma once

#include "Verbs.h"

#include <string>

namespace cli {

/// What follows the verb on the command line, such as " IN... -o OUT [OPTIONS]".
std::string Usage(const Verb& verb);

/// What stands for the option's value: "N" or "soft|hard|garrote"; empty for a flag.
std::string ValueName(const OptionRow& row);

/// "1 to 50: radius of ...", or the help alone for an option that is no number.
std::string RangeAndHelp(const OptionRow& row);

/// One line on what each exit status means.
std::string ExitStatusHelp();

/// The manual page in roff, section 1.
std::string ManPage();

} // namespace cli
