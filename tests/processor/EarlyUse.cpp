// A host that uses the library before its own main, from a constructor that the linker may place before all that have
// no priority. Built against the archive and against the shared library.
#include <claribox/KernelTable.h>

#include <cstdio>

namespace {

std::uint8_t rounded = 0;

struct EarlyHost {
    EarlyHost() {
        float values[16];
        for (float& value : values) {
            value = 10.7f;
        }
        std::uint8_t bytes[16];
        KernelTable.PackF32ToU8(values, bytes, 16);
        rounded = bytes[0];
    }
} const kEarlyHost;

} // namespace

int main() {
    // The members of the class SSE and up round where plain ones truncate.
    const std::uint8_t expected = __builtin_cpu_supports("sse") ? 11 : 10;
    if (rounded != expected) {
        std::fprintf(stderr, "10.7 gave %d before main, not %d: the table was not filled\n", rounded, expected);
        return 1;
    }
    return 0;
}
