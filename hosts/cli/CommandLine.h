// Parses a command line into a verb and its settings.
#pragma once

#include "Settings.h"
#include "Verbs.h"

#include <optional>

namespace cli {

struct Request {
    const Verb* verb;
    Settings settings;
};

/// Throws `UsageError` for a command line that makes no sense. Empty if it asked for help or the version, which has
/// then been printed.
std::optional<Request> ParseCommandLine(int argc, const char* const* argv);

} // namespace cli
