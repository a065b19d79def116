// A run of one operation over one or many pictures.
#pragma once

#include "CommandLine.h"

namespace cli {

/// Does all that the request asks for and tells of it on standard error. A picture that fails does not stop the
/// others. Returns the exit status; throws `UsageError` before any picture is opened.
int RunBatch(const Verb& verb, const PixelOperation& operation, const Settings& settings);

} // namespace cli
