// From the words of a command line to a verb and its settings, by the table of verbs.
#pragma once

#include "Settings.h"
#include "Verbs.h"

#include <optional>

namespace cli {

struct Request {
    const Verb* verb;
    Settings settings;
};

/// Throws `UsageError` where the words make no request. Empty where they asked for help or the version, which is
/// printed by then.
std::optional<Request> ParseCommandLine(int argc, const char* const* argv);

} // namespace cli
