// Arrays whose first element stands at the start of a cache line: a vector load that crosses from one line to the next
// costs two.
#pragma once

#include <cstddef>
#include <new>
#include <vector>

namespace simd {

template <typename T>
struct CacheLineAllocator {
    using value_type = T;
    static constexpr std::align_val_t kAlignment{64};

    CacheLineAllocator() = default;
    template <typename Other>
    CacheLineAllocator(const CacheLineAllocator<Other>&) {}

    T* allocate(std::size_t count) { return static_cast<T*>(::operator new(count * sizeof(T), kAlignment)); }
    void deallocate(T* block, std::size_t) { ::operator delete(block, kAlignment); }
    bool operator==(const CacheLineAllocator&) const { return true; }
};

/// A std::vector whose elements start on a multiple of 64 bytes.
template <typename T>
using AlignedVector = std::vector<T, CacheLineAllocator<T>>;

} // namespace simd
