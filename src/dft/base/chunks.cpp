#include "dft/base/chunks.h"

#include <atomic>

namespace dft {
namespace {

// The thread sanitizer cannot see how the runtime orders memory at fork and join; the atomics say the same in its
// terms.
struct Region {
    void (*run)(void* work, int chunk);
    void* work;
    std::atomic<int> forked{0};
    std::atomic<int> ended{0};
};

// Not inlined: the first read of shared memory that the sanitizer sees comes after the acquire.
[[gnu::noinline]] void RunOne(Region& region, int chunk) {
    static_cast<void>(region.forked.load(std::memory_order_acquire));
    region.run(region.work, chunk);
    region.ended.fetch_add(1, std::memory_order_release);
}

// Compilers pass `region` to the threads in a block of their own, which no atomic of ours guards.
[[gnu::noinline]] __attribute__((no_sanitize("thread"))) void ForkAndJoin(int chunks, int threads, Region* region) {
#pragma omp parallel for num_threads(threads) schedule(static) default(none) shared(chunks, region)
    for (int chunk = 0; chunk < chunks; ++chunk) {
        RunOne(*region, chunk);
    }
}

} // namespace

void RunChunks(int chunks, int threads, void (*run)(void* work, int chunk), void* work) {
    Region region{run, work};
    region.forked.store(1, std::memory_order_release);
    ForkAndJoin(chunks, threads, &region);
    static_cast<void>(region.ended.load(std::memory_order_acquire));
}

} // namespace dft
