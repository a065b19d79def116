#include "restore/Workers.h"

#include <claribox/Restore.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace restore {

Workers::Workers(int threads, int pieces, std::function<bool(double)> progress)
    : m_Threads(threads > 0 ? threads : std::max(1, static_cast<int>(std::thread::hardware_concurrency()))),
      m_Pieces(std::max(pieces, 1)), m_Progress(std::move(progress)) {}

void Workers::Run(int count, const std::function<void(int piece, int thread)>& work) {
    std::atomic<int> next = 0;
    std::atomic<int> done = 0;
    std::atomic<bool> isStopped = false;
    std::mutex mutex;
    std::exception_ptr fault;
    const auto guarded = [&](const auto& step) {
        try {
            step();
        } catch (...) {
            const std::lock_guard lock(mutex);
            fault = fault ? fault : std::current_exception();
            isStopped = true;
        }
    };
    const auto loop = [&](int thread) {
        for (int piece = next++; piece < count && !isStopped; piece = next++) {
            guarded([&] {
                work(piece, thread);
                ++done;
                if (thread == 0 && m_Progress && !m_Progress(static_cast<double>(m_Done + done) / m_Pieces)) {
                    throw claribox::Cancelled();
                }
            });
        }
    };
    {
        std::vector<std::jthread> threads;
        try {
            for (int k = 1; k < std::min(m_Threads, count); ++k) {
                threads.emplace_back([&loop, k] { loop(k); });
            }
        } catch (const std::system_error&) {
            // There is no further thread: those that have started do all the work.
        }
        loop(0);
    }
    m_Done += count;
    if (fault) {
        std::rethrow_exception(fault);
    }
}

} // namespace restore
