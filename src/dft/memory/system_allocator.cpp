#include "dft/memory/engine_memory.h"

#include <cstdlib>

namespace dft {

SystemAllocator engine_system_allocator = {std::malloc, std::free};

} // namespace dft
