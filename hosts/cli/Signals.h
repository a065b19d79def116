// Ctrl-C as a question asked between steps, so that nothing half done is left behind.
#pragma once

namespace cli {

/// From now on SIGINT, SIGTERM and SIGHUP only raise a flag, however often they come; those that were ignored stay
/// ignored. A file size limit becomes a write error instead of a signal.
void InstallSignalHandlers();

/// Whether one of them came.
bool InterruptRequested();

/// Throws `Interrupted` if one of them came.
void StopIfInterrupted();

} // namespace cli
