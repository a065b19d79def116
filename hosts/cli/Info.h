// The verb `info`.
#pragma once

#include "Settings.h"

namespace cli {

/// Prints the version, what the library found out about the processor and the classes of code in force to standard
/// output, as lines of text or with `settings.json` as one JSON object; returns the exit status.
int PrintInfo(const Settings& settings);

} // namespace cli
