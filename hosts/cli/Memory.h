// How much memory there is, and pictures that wait until enough of it is free.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>

namespace cli {

inline constexpr std::int64_t kMebibyte = std::int64_t{1} << 20;

/// Bytes this process can still take: the least of what the system has available, what the process's control group
/// allows and what its address space limit leaves.
std::int64_t FreeBytes();

/// Where the address space is limited (ulimit -v), keeps the process from reserving much of it that it never fills: an
/// arena for each thread that allocates, and stacks of 8 MiB. To be called before threads are started and after
/// `vips_init`, which sets stacks too.
void SpareAddressSpace();

/// Bytes of address space that the stacks of one picture's threads take; 0 where it is not limited, since stacks take
/// memory only as they are used.
std::int64_t StacksOfOnePicture();

/// "123 MiB", rounded up.
std::string Mebibytes(std::int64_t bytes);

/// A sum of bytes shared by the pictures at work.
class MemoryBudget {
public:
    explicit MemoryBudget(std::int64_t bytes) : m_Total(bytes), m_Left(bytes) {}

    /// Holds bytes of a budget while it lives.
    class Share {
    public:
        /// Waits until `bytes` are left. Throws `PictureError` with both numbers if the whole budget is smaller, and
        /// `Interrupted` if asked to stop meanwhile.
        Share(MemoryBudget& budget, std::int64_t bytes);
        ~Share();
        Share(const Share&) = delete;
        Share& operator=(const Share&) = delete;

    private:
        MemoryBudget& m_Budget;
        std::int64_t m_Bytes;
    };

private:
    std::mutex m_Mutex;
    std::condition_variable m_Freed;
    std::int64_t m_Total;
    std::int64_t m_Left;
};

} // namespace cli
