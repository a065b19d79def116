// Fork and join: the parallel regions of the engine.
#pragma once

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

} // namespace dft
