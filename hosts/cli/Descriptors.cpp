#include "Descriptors.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>

// Present in sanitizer builds only: sets the descriptor that the sanitizer reports to.
extern "C" void __sanitizer_set_report_fd(void* descriptor) __attribute__((weak));

namespace cli {
namespace {

/// Measured: two pictures at once, or one with the plot's fonts, took 9 files (Debian 12, libvips 8.14). Where none is
/// left GLib aborts the process. SurroundingsTest.cpp pins the refusal.
constexpr rlim_t kFewestFiles = 16;

/// The default limit of most systems.
constexpr rlim_t kEnoughFiles = 1024;

int resultDescriptor = STDOUT_FILENO;
int messageDescriptor = STDERR_FILENO;

void RequireFiles() {
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlim_t granted = std::min(limit.rlim_max, kEnoughFiles);
    if (limit.rlim_cur < granted) {
        limit.rlim_cur = granted;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
    if (limit.rlim_cur < kFewestFiles) {
        throw std::runtime_error("only " + std::to_string(limit.rlim_cur) + " files may be open at once; allow " +
                                 std::to_string(kFewestFiles) + " or more, such as by ulimit -n");
    }
}

/// Returns a duplicate of `descriptor` for our own use and puts the null device in its place.
int TakeAway(int descriptor) {
    const int own = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (own < 0 || null < 0 || dup2(null, descriptor) < 0) {
        return descriptor; // without a null device the libraries' output stays visible
    }
    close(null);
    return own;
}

} // namespace

void OpenMissingDescriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) < 0 && open("/dev/null", O_RDWR) < 0) {
            // Without a null device, something that can be neither read nor written.
            [[maybe_unused]] const int placeholder = open("/", O_PATH);
        }
    }
}

void SilenceLibraries() {
    RequireFiles();
    resultDescriptor = TakeAway(STDOUT_FILENO);
    messageDescriptor = TakeAway(STDERR_FILENO);
    if (__sanitizer_set_report_fd) {
        __sanitizer_set_report_fd(reinterpret_cast<void*>(static_cast<std::intptr_t>(messageDescriptor)));
    }
}

int ResultDescriptor() {
    return resultDescriptor;
}

int MessageDescriptor() {
    return messageDescriptor;
}

} // namespace cli
