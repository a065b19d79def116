// Fork and join: the parallel regions of the engine, how work is cut into chunks, and the status of all.
#pragma once

#include "dft/base/record.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace dft {

/// Calls run(work, chunk) for every chunk below `chunks`, on up to `threads` threads, each with a run of adjacent
/// chunks (OpenMP's static schedule), and returns when all have ended. What the caller wrote before is seen by every
/// chunk, and what the chunks wrote by the caller afterwards. Fewer threads serve where the runtime grants no more,
/// down to the calling one alone. Nothing happens for `chunks` below 1.
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

/// The slice of `record` that chunk `chunk` of `chunks` takes: runs of ceil(length / chunks) positions, the last cut at
/// the end; surplus chunks get none.
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
