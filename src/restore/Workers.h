// Work shared among threads, with progress and cancelling.
#pragma once

#include <functional>
#include <vector>

namespace restore {

/// Runs numbered pieces of work on threads that live for one call of Run().
class Workers {
public:
    /// `threads` of 0: one for each processor. `pieces` are those of all calls of Run(), for the progress.
    Workers(int threads, int pieces, std::function<bool(double)> progress);

    int Threads() const { return m_Threads; }

    /// Calls work(piece, thread) for each piece below `count`, with threads numbered below Threads(); the calling
    /// thread works as well and reports the progress after each of its pieces. Throws `Cancelled` where the callback
    /// returns false, and what it or a piece throws, after all threads have ended.
    void Run(int count, const std::function<void(int piece, int thread)>& work);

private:
    int m_Threads;
    int m_Pieces;
    int m_Done = 0;
    std::function<bool(double)> m_Progress;
};

} // namespace restore
