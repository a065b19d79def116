// The ways a run or a picture can end early.
#pragma once

#include <stdexcept>

namespace cli {

/// What a shell sees when the command ends.
enum ExitStatus : int {
    kExitDone = 0,
    kExitPictureFailed = 1, ///< at least one picture was not written; the others were
    kExitUsage = 2,         ///< the command line is wrong or an output cannot be written; nothing was done
    kExitInterrupted = 130, ///< by convention 128 + SIGINT
};

/// The command line asks for something that cannot be; the text names the option or file and what would be right.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// One picture cannot be read, processed or written; the text leaves out the picture's name.
struct PictureError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The user asked to stop.
struct Interrupted {};

} // namespace cli
