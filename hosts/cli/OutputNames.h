// Which output belongs to which input: a file, a folder, a template, or standard output.
#pragma once

#include "Settings.h"

#include <filesystem>
#include <string>
#include <vector>

namespace cli {

struct OutputNames {
    std::vector<std::string> names; ///< one an input; "-" for standard output
    std::filesystem::path folder;   ///< that they go into and that may be new; empty where one file is named
};

/// Reads `settings.output`: "-"; a template with {name} and {ext} for the input's name and ending; a folder, which it
/// is for several inputs, with a slash at its end, or where it exists; or else the name of one file. `settings.format`
/// takes the place of the inputs' endings. Throws `UsageError`, which names the option -o, if that makes no sense.
OutputNames NameOutputs(const Settings& settings);

/// Whether the output is standard output, in the place of a name; a file that is called so is reached as "./-".
bool IsStandardOutput(const std::string& output);

/// What messages call an output, in quotes where it has a name.
std::string OutputName(const std::string& output);

/// The path in quotes.
std::string Quoted(const std::filesystem::path& path);

} // namespace cli
