#include "Memory.h"

#include "Errors.h"
#include "Signals.h"
#include "Threads.h"

#include <malloc.h>
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <limits>
#include <string_view>

namespace cli {
namespace {

constexpr std::int64_t kUnlimited = std::numeric_limits<std::int64_t>::max();

/// The first number of a file, or `otherwise` where there is none.
std::int64_t NumberIn(const char* path, std::int64_t otherwise) {
    std::int64_t number = 0;
    return std::ifstream(path) >> number ? number : otherwise;
}

/// The number after the word `key` in a file, or `otherwise` where there is none.
std::int64_t NumberAfter(const char* path, std::string_view key, std::int64_t otherwise) {
    std::ifstream file(path);
    std::string word;
    while (file >> word) {
        std::int64_t number = 0;
        if (word == key && file >> number) {
            return number;
        }
    }
    return otherwise;
}

std::int64_t SystemFreeBytes() {
    const std::int64_t kibibytes = NumberAfter("/proc/meminfo", "MemAvailable:", -1);
    return kibibytes < 0 ? kUnlimited : kibibytes * 1024;
}

std::int64_t ControlGroupFreeBytes() {
    const std::int64_t limit = NumberIn("/sys/fs/cgroup/memory.max", kUnlimited);
    // Cached files count as used and are given up on demand.
    const std::int64_t cached = NumberAfter("/sys/fs/cgroup/memory.stat", "inactive_file", 0);
    return limit == kUnlimited ? kUnlimited : limit - NumberIn("/sys/fs/cgroup/memory.current", 0) + cached;
}

/// `kUnlimited` where there is no limit.
std::int64_t AddressSpaceLimit() {
    rlimit limit = {};
    return getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY
               ? kUnlimited
               : static_cast<std::int64_t>(limit.rlim_cur);
}

std::int64_t AddressSpaceFreeBytes() {
    const std::int64_t limit = AddressSpaceLimit();
    return limit == kUnlimited ? kUnlimited : limit - NumberIn("/proc/self/statm", 0) * sysconf(_SC_PAGESIZE);
}

/// The stack of a thread where the address space is limited: as much as libvips asks for, where the system would
/// reserve 8 MiB. SurroundingsTest.cpp has the command work under such limits.
constexpr std::int64_t kStackBytes = 2 * kMebibyte;

} // namespace

std::int64_t FreeBytes() {
    return std::max<std::int64_t>(0, std::min({SystemFreeBytes(), ControlGroupFreeBytes(), AddressSpaceFreeBytes()}));
}

void SpareAddressSpace() {
    if (AddressSpaceLimit() == kUnlimited) {
        return;
    }
    mallopt(M_ARENA_MAX, 1);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, static_cast<std::size_t>(kStackBytes));
    pthread_setattr_default_np(&attributes);
    pthread_attr_destroy(&attributes);
}

std::int64_t StacksOfOnePicture() {
    return AddressSpaceLimit() == kUnlimited ? 0 : kStackBytes * ThreadsOfOnePicture();
}

std::string Mebibytes(std::int64_t bytes) {
    return std::to_string((bytes + kMebibyte - 1) / kMebibyte) + " MiB";
}

MemoryBudget::Share::Share(MemoryBudget& budget, std::int64_t bytes) : m_Budget(budget), m_Bytes(bytes) {
    if (bytes > budget.m_Total) {
        throw PictureError("needs about " + Mebibytes(bytes) + " of memory, but " + Mebibytes(budget.m_Total) +
                           " are free; free some or take a smaller picture");
    }
    std::unique_lock lock(budget.m_Mutex);
    // A signal handler cannot notify, so the wait is broken off now and then to look for an interrupt.
    while (!budget.m_Freed.wait_for(lock, std::chrono::milliseconds(100), [&] { return budget.m_Left >= bytes; })) {
        StopIfInterrupted();
    }
    budget.m_Left -= bytes;
}

MemoryBudget::Share::~Share() {
    {
        const std::lock_guard lock(m_Budget.m_Mutex);
        m_Budget.m_Left += m_Bytes;
    }
    m_Budget.m_Freed.notify_all();
}

} // namespace cli
