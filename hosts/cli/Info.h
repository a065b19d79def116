// The verb `info`.
#pragma once

namespace cli {

/// Prints version and processor counts to standard output; returns the exit status.
int PrintInfo();

} // namespace cli
