// Which picture goes where, checked as far as it can be before any of them is opened.
#pragma once

#include "Settings.h"

#include <filesystem>
#include <string>
#include <vector>

namespace cli {

struct Task {
    std::string input;
    std::string output;  ///< empty where nothing is written
    std::string problem; ///< why this picture cannot be done; empty if it can
};

struct Plan {
    std::vector<Task> tasks;         ///< one an input
    std::filesystem::path newFolder; ///< that was made for the outputs; empty if none was
};

/// Throws `UsageError` where the run would go wrong, and then nothing was done: an output cannot be written, would
/// replace a file without --force or one of the inputs, or is also that of another input, by whatever names and links.
/// Also removes what killed runs left in the folders of the outputs.
Plan PlanOutputs(const Settings& settings);

/// The same for the one file that `option` names.
Plan PlanOutput(const Settings& settings, const std::string& option);

/// Without outputs.
Plan PlanReading(const Settings& settings);

} // namespace cli
