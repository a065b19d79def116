#include "dft/memory/engine_memory.h"

#include <cstring>

namespace dft {
namespace {
constexpr std::size_t kPlanAlignment = 32;
// Room for the word below the result and for moving it up to a multiple of the alignment.
constexpr std::size_t kPlanHeader = kPlanAlignment + sizeof(void*);
} // namespace

void* plan_alloc(std::ptrdiff_t bytes) {
    if (bytes < 1) {
        return nullptr;
    }
    void* const heap = engine_system_allocator.allocate(static_cast<std::size_t>(bytes) + kPlanHeader);
    if (heap == nullptr) {
        return nullptr;
    }
    const std::size_t past = (reinterpret_cast<std::uintptr_t>(heap) + kPlanHeader - 1) % kPlanAlignment;
    unsigned char* const result = static_cast<unsigned char*>(heap) + kPlanHeader - 1 - past;
    std::memcpy(result - sizeof(heap), &heap, sizeof(heap));
    return result;
}

void plan_free(void* block) {
    if (block == nullptr) {
        return;
    }
    void* heap = nullptr;
    std::memcpy(&heap, static_cast<unsigned char*>(block) - sizeof(heap), sizeof(heap));
    engine_system_allocator.release(heap);
}

} // namespace dft
