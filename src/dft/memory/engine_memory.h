// Memory of the DFT engine, and the decision whether it may use threads.
//
// A compute call allocates its work memory and frees it at once, often on several threads, in the same few sizes. A
// fixed table caches such blocks per thread, so the steady state costs one lock and a scan of 32 cells.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace dft {

inline constexpr int kThreadSlots = 64;     ///< given; pinned by EngineMemory.The65thThreadGetsNullAndTheLockIsFree
inline constexpr int kBlocksPerThread = 32; ///< given; the tests of EngineMemory fill all of them

/// The cached blocks of one thread. Only `owner_thread` is shared; it changes under `engine_table_lock`.
struct EngineBlockSlot {
    void* block[kBlocksPerThread];              ///< null while never used
    std::uint32_t block_size[kBlocksPerThread]; ///< bytes, 2^32 - 1 for more; 0 while never used
    std::uint8_t block_in_use[kBlocksPerThread];
    std::atomic<std::uint32_t> owner_thread; ///< system thread id, 0 if the slot is free
};

extern EngineBlockSlot engine_block_table[kThreadSlots];
extern std::atomic<std::uint32_t> engine_table_lock; ///< 1 while a thread holds it
extern std::atomic<std::int32_t> fast_mm_disabled;   ///< -1 until the environment was read, then 0 or 1
extern std::atomic<std::int32_t> serial_switch;      ///< the same

/// Where blocks and plan memory come from. Tests put a failing or a counting allocator here.
struct SystemAllocator {
    void* (*allocate)(std::size_t bytes); ///< null if there is none
    void (*release)(void* block);
};
extern SystemAllocator engine_system_allocator;

/// Work memory of the calling thread, from its cached blocks if one fits, aligned as the system allocator aligns. Null
/// if the system has none, the thread holds 32 blocks, or 64 other threads hold some. If `CLARIBOX_DISABLE_FAST_MM` is
/// set and not empty, every block comes from the system allocator.
void* engine_alloc(std::size_t bytes);

/// Gives back a block of the calling thread. Other pointers are ignored, or passed to the system allocator if
/// `CLARIBOX_DISABLE_FAST_MM` is set.
void engine_free(void* block);

/// Releases the cached blocks of all threads. No block may be in use.
void engine_free_buffers();

/// 1 if the engine must not use threads, 0 if it may: by `OMP_NUM_THREADS` and `CLARIBOX_SERIAL`, read once.
std::int32_t engine_serial_switch();

/// Threads a compute call may use: 1 if the serial switch is on or inside a parallel region, else what the runtime
/// grants.
int engine_maximum_threads();

/// Memory of a plan, aligned to 32 bytes; null for a count below 1 or exhausted memory. Any thread may release it.
void* plan_alloc(std::ptrdiff_t bytes);
/// Gives it back, on any thread; null is ignored.
void plan_free(void* block);

} // namespace dft
