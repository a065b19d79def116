// The verb `guess-motion`.
#pragma once

#include "Settings.h"

namespace cli {

/// Prints a line for each picture, in their order, to standard output: degree, region and time, as text or with
/// `settings.json` as a JSON object. With an `output` it also draws the costs of all degrees into that PNG file. A
/// picture that fails does not stop the others. Returns the exit status; throws `UsageError` before any picture is
/// opened.
int PrintMotionGuesses(const Settings& settings);

} // namespace cli
