// A run of one operation over one or many pictures.
#pragma once

#include "CommandLine.h"

namespace cli {

/// Runs the operation on every picture and reports on standard error. A picture that fails does not stop the others.
/// Returns the exit status; throws `UsageError` before any picture is opened.
int RunBatch(const Verb& verb, const PixelOperation& operation, const Settings& settings);

} // namespace cli
