// Counts the memory that a stretch of code takes from the heap.
#pragma once

#include <cstddef>

namespace bench {

/// Watches every block of the C heap that the process allocates or frees, in whatever library, between construction
/// and destruction. One meter at a time. Blocks mapped past the heap's own calls are not seen.
class MemoryMeter {
public:
    MemoryMeter();
    ~MemoryMeter();
    MemoryMeter(const MemoryMeter&) = delete;
    MemoryMeter& operator=(const MemoryMeter&) = delete;

    /// Bytes in use at the worst moment so far, beyond those in use at construction.
    std::size_t PeakBytes() const;
};

} // namespace bench
