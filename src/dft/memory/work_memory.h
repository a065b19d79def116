// Memory of one compute call, given back where its scope ends, by the thread that took it.
#pragma once

#include "dft/memory/engine_memory.h"

#include <cstddef>
#include <cstdint>

namespace dft {

/// Work memory of descriptor routines: `slices` times `bytes` bytes; up to 16 bytes come from the object itself.
class WorkMemory {
public:
    explicit WorkMemory(std::size_t bytes, int slices = 1) : m_SliceBytes(bytes), m_Block(nullptr) {
        const auto count = static_cast<std::size_t>(slices);
        if (bytes > SIZE_MAX / count) {
            return;
        }
        const std::size_t all = bytes * count;
        m_Block = all <= sizeof m_Local ? m_Local : static_cast<char*>(engine_alloc(all));
    }
    ~WorkMemory() {
        if (m_Block != nullptr && m_Block != m_Local) {
            engine_free(m_Block);
        }
    }
    WorkMemory(const WorkMemory&) = delete;
    WorkMemory& operator=(const WorkMemory&) = delete;

    /// Null if there was no memory.
    void* data() const { return m_Block; }
    void* slice(int index) const { return m_Block + static_cast<std::size_t>(index) * m_SliceBytes; }

private:
    std::size_t m_SliceBytes;
    alignas(16) char m_Local[16];
    char* m_Block;
};

/// Elements aligned to 64 bytes; `engine_alloc` promises no alignment, so the block is larger.
template <typename T>
class LineBuffer {
public:
    static constexpr std::size_t kAlignment = 64;

    explicit LineBuffer(std::size_t count)
        : m_Memory(count > (SIZE_MAX - kAlignment) / sizeof(T) ? SIZE_MAX : count * sizeof(T) + kAlignment) {}

    /// Null if there was none.
    T* data() const {
        char* const block = static_cast<char*>(m_Memory.data());
        const std::size_t past = reinterpret_cast<std::uintptr_t>(block) % kAlignment;
        return block == nullptr ? nullptr : reinterpret_cast<T*>(block + (kAlignment - past));
    }

private:
    WorkMemory m_Memory;
};

} // namespace dft
