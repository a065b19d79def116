// The three standard descriptors: always open, whatever the caller closed, and out of reach of libraries that print.
#pragma once

namespace cli {

/// Puts the null device in the place of each standard descriptor that is closed: the next file to be opened would
/// otherwise become it, and messages would go into a picture. To be called before anything else.
void OpenMissingDescriptors();

/// From here on what libraries print to standard output or error goes nowhere: fontconfig, for one, complains of caches
/// that it cannot write. Our own output uses the two descriptors below. Also lets the process open as many files as the
/// system grants it. Throws `std::runtime_error` if that is too few to work on a picture.
void SilenceLibraries();

/// Where results go: standard output, wherever it is by now.
int ResultDescriptor();

/// Where messages go: standard error.
int MessageDescriptor();

} // namespace cli
