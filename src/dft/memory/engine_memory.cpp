#include "dft/memory/engine_memory.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <omp.h>
#include <pthread.h>
#include <string_view>
#include <unistd.h>

namespace dft {

EngineBlockSlot engine_block_table[kThreadSlots] = {};
std::atomic<std::uint32_t> engine_table_lock{0};
std::atomic<std::int32_t> fast_mm_disabled{-1};
SystemAllocator engine_system_allocator = {std::malloc, std::free};

namespace {

class TableLock {
public:
    TableLock() {
        std::uint32_t free = 0;
        while (!engine_table_lock.compare_exchange_weak(free, 1, std::memory_order_acquire)) {
            free = 0;
            __builtin_ia32_pause();
        }
    }
    ~TableLock() { engine_table_lock.store(0, std::memory_order_release); }
    TableLock(const TableLock&) = delete;
    TableLock& operator=(const TableLock&) = delete;
};

thread_local std::uint32_t knownThread = 0;

/// The calling thread's system id, asked for once: the call costs more than the rest of an allocation. A forked child
/// asks again.
std::uint32_t CallingThread() {
    if (knownThread == 0) {
        [[maybe_unused]] static const int registered = pthread_atfork(nullptr, nullptr, [] { knownThread = 0; });
        knownThread = static_cast<std::uint32_t>(gettid());
    }
    return knownThread;
}

EngineBlockSlot* SlotOf(std::uint32_t owner) {
    const auto slot = std::find_if(std::begin(engine_block_table), std::end(engine_block_table),
                                   [owner](const EngineBlockSlot& candidate) {
                                       return candidate.owner_thread.load(std::memory_order_relaxed) == owner;
                                   });
    return slot == std::end(engine_block_table) ? nullptr : slot;
}

/// The calling thread's slot, claimed if it has none; null if all are taken. A slot given up by another thread comes
/// with its blocks; the lock orders what both did to them.
EngineBlockSlot* ClaimSlot() {
    const std::uint32_t thread = CallingThread();
    const TableLock lock;
    if (EngineBlockSlot* const own = SlotOf(thread)) {
        return own;
    }
    EngineBlockSlot* const slot = SlotOf(0);
    if (slot != nullptr) {
        slot->owner_thread.store(thread, std::memory_order_relaxed);
    }
    return slot;
}

/// The idle cell with the smallest block of at least `bytes`, the first of equals, or -1. Cells never used count only
/// if `mayBeEmpty`.
int SmallestIdleCell(const EngineBlockSlot& slot, std::size_t bytes, bool mayBeEmpty) {
    int smallest = -1;
    for (int i = 0; i < kBlocksPerThread; ++i) {
        const bool fits = slot.block_size[i] >= bytes && (mayBeEmpty || slot.block[i] != nullptr);
        if (slot.block_in_use[i] == 0 && fits && (smallest < 0 || slot.block_size[i] < slot.block_size[smallest])) {
            smallest = i;
        }
    }
    return smallest;
}

bool FastManagerDisabled() {
    std::int32_t disabled = fast_mm_disabled.load(std::memory_order_relaxed);
    if (disabled == -1) {
        const char* const value = std::getenv("CLARIBOX_DISABLE_FAST_MM");
        disabled = value != nullptr && value[0] != '\0' ? 1 : 0;
        fast_mm_disabled.store(disabled, std::memory_order_relaxed);
    }
    return disabled == 1;
}

} // namespace

void* engine_alloc(std::size_t bytes) {
    if (FastManagerDisabled()) {
        return engine_system_allocator.allocate(bytes);
    }
    EngineBlockSlot* const slot = ClaimSlot();
    if (slot == nullptr) {
        return nullptr;
    }
    int cell = SmallestIdleCell(*slot, bytes, false);
    if (cell < 0) {
        cell = SmallestIdleCell(*slot, 0, true);
        if (cell < 0) {
            return nullptr;
        }
        if (slot->block[cell] != nullptr) {
            engine_system_allocator.release(slot->block[cell]);
        }
        slot->block[cell] = engine_system_allocator.allocate(bytes);
        // A block too large for the field is recorded as smaller than it is, never the other way round.
        slot->block_size[cell] =
            static_cast<std::uint32_t>(std::min<std::size_t>(bytes, std::numeric_limits<std::uint32_t>::max()));
    }
    // Required: a cell whose allocation failed stays in use, with no block to give back, until engine_free_buffers.
    // Pinned by EngineMemory.FailedAllocationKeepsItsCell.
    slot->block_in_use[cell] = 1;
    return slot->block[cell];
}

void engine_free(void* block) {
    if (fast_mm_disabled.load(std::memory_order_relaxed) == 1) {
        engine_system_allocator.release(block);
        return;
    }
    // No lock: no other thread makes or unmakes the caller the owner of a slot.
    EngineBlockSlot* const slot = SlotOf(CallingThread());
    if (slot == nullptr) {
        return;
    }
    const auto cell = std::find(std::begin(slot->block), std::end(slot->block), block);
    if (block != nullptr && cell != std::end(slot->block)) {
        slot->block_in_use[cell - std::begin(slot->block)] = 0;
    }
    if (std::find(std::begin(slot->block_in_use), std::end(slot->block_in_use), 1) == std::end(slot->block_in_use)) {
        // The blocks stay for the next owner.
        const TableLock lock;
        slot->owner_thread.store(0, std::memory_order_relaxed);
    }
}

void engine_free_buffers() {
    if (fast_mm_disabled.load(std::memory_order_relaxed) == 1) {
        return;
    }
    const TableLock lock;
    for (EngineBlockSlot& slot : engine_block_table) {
        for (int i = 0; i < kBlocksPerThread; ++i) {
            slot.block_in_use[i] = 0;
            slot.block_size[i] = 0;
            if (slot.block[i] != nullptr) {
                engine_system_allocator.release(slot.block[i]);
                slot.block[i] = nullptr;
            }
        }
        slot.owner_thread.store(0, std::memory_order_relaxed);
    }
}

namespace {
constexpr std::size_t kPlanAlignment = 32; // given; EngineMemory.PlanMemoryIsAlignedAndKnowsItsHeapBlock pins it
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

std::atomic<std::int32_t> serial_switch{-1};

std::int32_t engine_serial_switch() {
    std::int32_t serial = serial_switch.load(std::memory_order_relaxed);
    if (serial == -1) {
        const char* const value = std::getenv("CLARIBOX_SERIAL");
        if (value == nullptr) {
            serial = std::getenv("OMP_NUM_THREADS") == nullptr ? 1 : 0;
        } else {
            // Required: no other spelling counts, "Yes" included. Pinned by EngineThreads.SerialSwitch.
            const std::string_view spelling(value);
            serial = spelling == "YES" || spelling == "yes" ? 1 : 0;
        }
        serial_switch.store(serial, std::memory_order_relaxed);
    }
    return serial;
}

int engine_maximum_threads() {
    if (engine_serial_switch() == 1 || omp_in_parallel() != 0) {
        return 1;
    }
    return omp_get_max_threads();
}

} // namespace dft
