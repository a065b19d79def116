#include "StandardOutput.h"

#include "Descriptors.h"

#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace cli {

void PrintOut(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(ResultDescriptor(), text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), "standard output cannot be written");
        }
    }
}

} // namespace cli
