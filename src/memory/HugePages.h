// Large blocks of memory on large pages.
#pragma once

#include <cstddef>

namespace memory {

/// Asks for pages of 2 MiB under the whole pages of the `size` bytes at `block`, before they are first written; does
/// nothing for small blocks. Only a hint: a refusal changes nothing.
void AdviseHugePages(void* block, std::size_t size);

} // namespace memory
