#include "HugePages.h"

#include <cstdint>

#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace memory {

void AdviseHugePages([[maybe_unused]] void* block, [[maybe_unused]] std::size_t size) {
    // The first write to a fresh 4 KiB page costs more than the arithmetic on its bytes: the kernel enters, clears and
    // maps it. From this size on it pays to ask for pages of 2 MiB instead; smaller blocks would hardly hold one.
    constexpr std::size_t kThreshold = std::size_t{4} << 20;
    if (size < kThreshold) {
        return;
    }
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    const std::uintptr_t first = (address + page - 1) / page * page;
    const std::uintptr_t last = (address + size) / page * page;
    ::madvise(static_cast<unsigned char*>(block) + (first - address), last - first, MADV_HUGEPAGE);
#endif
}

} // namespace memory
