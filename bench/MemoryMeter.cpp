// The functions of the heap are defined here in place of the C library's, which the dynamic linker then prefers for
// the whole process; they hand on to glibc's own names for the same functions.
#include "MemoryMeter.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <malloc.h>

extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
void __libc_free(void*);
}

namespace bench {
namespace {

std::atomic<bool> watching{false};
std::atomic<long long> inUse{0};
std::atomic<long long> peak{0};

void* Count(void* block) {
    if (watching.load(std::memory_order_relaxed) && block != nullptr) {
        const long long now = inUse += static_cast<long long>(malloc_usable_size(block));
        long long seen = peak;
        while (now > seen && !peak.compare_exchange_weak(seen, now)) {
        }
    }
    return block;
}

void Discount(void* block) {
    if (watching.load(std::memory_order_relaxed) && block != nullptr) {
        inUse -= static_cast<long long>(malloc_usable_size(block));
    }
}

} // namespace

MemoryMeter::MemoryMeter() {
    inUse = 0;
    peak = 0;
    watching = true;
}

MemoryMeter::~MemoryMeter() {
    watching = false;
}

std::size_t MemoryMeter::PeakBytes() const {
    return static_cast<std::size_t>(peak.load());
}

} // namespace bench

extern "C" {

void* malloc(std::size_t size) {
    return bench::Count(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size) {
    return bench::Count(__libc_calloc(count, size));
}

void* realloc(void* block, std::size_t size) {
    bench::Discount(block);
    return bench::Count(__libc_realloc(block, size));
}

void* memalign(std::size_t alignment, std::size_t size) {
    return bench::Count(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return memalign(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
    void* const result = memalign(alignment, size);
    if (result == nullptr) {
        return ENOMEM;
    }
    *block = result;
    return 0;
}

void free(void* block) {
    bench::Discount(block);
    __libc_free(block);
}
}
