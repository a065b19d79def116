// The table of verbs. A new operation is a file in verbs/ and a line here.
#pragma once

#include "Verb.h"

#include <span>
#include <string>

namespace cli {

std::span<const Verb> Verbs();

/// The options that stand in the place of a verb.
std::span<const OptionRow> GeneralOptions();

/// The verb of this name, or null.
const Verb* FindVerb(const std::string& name);

/// "blur, motion-blur, ..." with `between` in place of the commas.
std::string VerbNames(const char* between = ", ");

bool TakesPictures(const Verb& verb);

} // namespace cli
