// What shells complete of the command's verbs and options, from the tables of both.
#pragma once

#include <string>
#include <vector>

namespace cli {

/// The names of the shells that `Completion` knows.
std::vector<std::string> CompletionShells();

/// The script for the shell of this place among them.
std::string Completion(int shell);

} // namespace cli
