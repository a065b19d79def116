#include "claribox/KernelTable.h"

#include <cstdlib>
#include <cstring>

#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace {

// The first write to a fresh 4 KiB page costs more than the arithmetic on its bytes: the kernel enters, clears and maps
// it. From this size on it pays to ask for pages of 2 MiB instead; smaller blocks would hardly hold one.
constexpr std::size_t kHugePageThreshold = std::size_t{4} << 20;

/// Asks for huge pages under the whole pages of the `size` bytes at `block`. Only a hint: a refusal changes nothing.
void AdviseHugePages([[maybe_unused]] void* block, [[maybe_unused]] std::size_t size) {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    const std::uintptr_t first = (address + page - 1) / page * page;
    const std::uintptr_t last = (address + size) / page * page;
    ::madvise(static_cast<unsigned char*>(block) + (first - address), last - first, MADV_HUGEPAGE);
#endif
}

} // namespace

// Raw block:  | slack | offset, 32 bits | block of `size` bytes ... | slack |
// The offset leads back from the block to the raw block and lies between alignment + 1 and 2 * alignment, so that there
// is room for it in front of the block at any alignment from 8 on.
void* ChAlignedAlloc(std::size_t size, int alignment) {
    if (alignment < 8) {
        return nullptr;
    }
    const auto step = static_cast<std::size_t>(alignment);
    const std::size_t rawSize = size + 2 * step;
    auto* const raw = static_cast<unsigned char*>(std::malloc(rawSize));
    // Unsigned, since addresses of the upper half of a 32-bit space are negative as signed numbers and would push the
    // block beyond the end of the raw one.
    const std::size_t remainder = reinterpret_cast<std::uintptr_t>(raw) % step;
    const auto offset = static_cast<std::uint32_t>(2 * step - remainder);
    unsigned char* const block = raw + offset;
    std::memcpy(block - sizeof offset, &offset, sizeof offset); // the word need not be aligned
    if (size >= kHugePageThreshold) {
        AdviseHugePages(raw, rawSize);
    }
    return block;
}

void ChAlignedFree(void* block) {
    auto* const bytes = static_cast<unsigned char*>(block);
    std::uint32_t offset;
    std::memcpy(&offset, bytes - sizeof offset, sizeof offset);
    std::free(bytes - offset);
}
