#include "claribox/KernelTable.h"
#include "memory/HugePages.h"

#include <cstdlib>
#include <cstring>

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
    memory::AdviseHugePages(raw, rawSize);
    return block;
}

void ChAlignedFree(void* block) {
    auto* const bytes = static_cast<unsigned char*>(block);
    std::uint32_t offset;
    std::memcpy(&offset, bytes - sizeof offset, sizeof offset);
    std::free(bytes - offset);
}
