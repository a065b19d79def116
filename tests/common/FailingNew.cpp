#include "common/FailingNew.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

thread_local FailingNew* inForce = nullptr;

void* Allocate(std::size_t bytes, std::size_t alignment = alignof(std::max_align_t)) {
    if (inForce != nullptr) {
        inForce->Request();
    }
    const std::size_t whole = (std::max<std::size_t>(bytes, 1) + alignment - 1) / alignment * alignment;
    void* const block = std::aligned_alloc(alignment, whole);
    return block != nullptr ? block : throw std::bad_alloc();
}

void Release(void* block) {
    if (inForce != nullptr && block != nullptr) {
        inForce->Delete();
    }
    std::free(block);
}

} // namespace

FailingNew::FailingNew(int refused) : m_Refused(refused) {
    inForce = this;
}
FailingNew::~FailingNew() {
    inForce = nullptr;
}

void FailingNew::Request() {
    if (m_Requests++ == m_Refused) {
        throw std::bad_alloc();
    }
    ++m_Live;
}

// All forms that the runtime or a sanitizer would else give of its own: what one makes another may delete.
void* operator new(std::size_t bytes) {
    return Allocate(bytes);
}
void* operator new[](std::size_t bytes) {
    return Allocate(bytes);
}
void* operator new(std::size_t bytes, std::align_val_t alignment) {
    return Allocate(bytes, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    try {
        return Allocate(bytes);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void operator delete(void* block) noexcept {
    Release(block);
}
void operator delete[](void* block) noexcept {
    Release(block);
}
void operator delete(void* block, std::size_t) noexcept {
    Release(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    Release(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    Release(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    Release(block);
}
