// Fork and join: parallel regions, the chunks of work in them, and their common status.
#pragma once

#include "dft/base/record.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace dft {

/// Calls run(work, chunk) for every chunk on up to `threads` threads, each taking adjacent chunks (OpenMP's static
/// schedule), and returns when all have ended. Memory is ordered at both ends. If the runtime grants fewer threads,
/// fewer serve, at worst the calling one. Does nothing for `chunks` below 1.
void RunChunks(int chunks, int threads, void (*run)(void* work, int chunk), void* work);

/// The same with work(chunk).
template <typename Work>
void RunChunks(int chunks, int threads, Work work) {
    RunChunks(
        chunks, threads, [](void* object, int chunk) { (*static_cast<Work*>(object))(chunk); }, &work);
}

/// A run of positions of one record, to which a pass is confined.
struct Slice {
    int record;
    std::ptrdiff_t first;
    std::ptrdiff_t count;
};

/// The share of chunk `chunk`: ceil(length / chunks) positions, cut at the end; surplus chunks get none.
inline Slice ChunkOf(int record, std::ptrdiff_t length, int chunks, int chunk) {
    const std::ptrdiff_t size = length / chunks + (length % chunks != 0 ? 1 : 0);
    const std::ptrdiff_t first = chunk * size < length ? chunk * size : length;
    return {record, first, size < length - first ? size : length - first};
}

/// The first status other than DFT_OK that any thread reports.
class SharedStatus {
public:
    void Report(std::int32_t status) {
        std::int32_t before = DFT_OK;
        if (status != DFT_OK) {
            m_Status.compare_exchange_strong(before, status, std::memory_order_relaxed);
        }
    }
    std::int32_t Get() const { return m_Status.load(std::memory_order_relaxed); }

private:
    std::atomic<std::int32_t> m_Status{DFT_OK};
};

} // namespace dft
