// Which picture goes where, checked as far as it can be before any of them is opened.
#pragma once

#include "Settings.h"

#include <string>
#include <vector>

namespace cli {

struct Task {
    std::string input;
    std::string output;  ///< empty where nothing is written
    std::string problem; ///< why this picture cannot be done; empty if it can
};

/// One task an input. Throws `UsageError` where the whole run would go wrong: `option`, which gave `settings.output`,
/// is no file or folder that can be written, two inputs have the same output, or an output is one of the inputs, by
/// whatever name.
std::vector<Task> PlanTasks(const Settings& settings, const std::string& option = "-o");

/// One task an input, without outputs.
std::vector<Task> PlanReading(const Settings& settings);

} // namespace cli
