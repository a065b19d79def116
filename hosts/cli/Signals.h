// Ctrl-C, polled between steps so that nothing half done is left behind.
#pragma once

namespace cli {

/// From now on the first SIGINT, SIGTERM or SIGHUP only raises a flag, and the same signal again ends the process at
/// once: some coders of libvips cannot be interrupted. Those that were ignored stay ignored. A file size limit and a
/// pipe that nobody reads any more become write errors instead of signals.
void InstallSignalHandlers();

/// Whether one of them came.
bool InterruptRequested();

/// Throws `Interrupted` if one of them came.
void StopIfInterrupted();

} // namespace cli
