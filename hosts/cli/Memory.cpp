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

constexpr std::int64_t Mebibyte = std::int64_t{1} << 20;

/// The process itself, row buffers and threads: 32 MiB were measured.
constexpr std::int64_t FixedBytes = 48 * Mebibyte;

/// Bytes a pixel that a reader or writer of libvips holds beside the picture.
struct CoderCost {
    std::string_view name;
    std::int64_t opaque;
    std::int64_t withAlpha;
};

/// Measured as peak memory on 6 megapixels of noise, the costliest picture, with libvips 8.14, plus a tenth or more.
constexpr CoderCost Coders[] = {
    {"webpload", 10, 12}, {"heifload", 16, 20}, {"magickload", 16, 16}, {"gifload", 8, 8},      {"jxlload", 10, 44},
    {"webpsave", 14, 44}, {"heifsave", 52, 56}, {"jxlsave", 56, 80},    {"magicksave", 16, 16}, {"gifsave", 18, 18},
};

/// The rest go row by row, but for progressive JPEG and interlaced PNG.
constexpr std::int64_t OtherCoderCost = 8;

std::int64_t CoderBytes(const std::string& name, const PictureShape& shape) {
    const auto* row = std::ranges::find_if(Coders, [&](const CoderCost& cost) { return name.starts_with(cost.name); });
    if (row == std::end(Coders)) {
        return shape.Pixels() * OtherCoderCost;
    }
    return shape.Pixels() * (shape.bands % 2 == 0 ? row->withAlpha : row->opaque);
}

constexpr std::int64_t Unlimited = std::numeric_limits<std::int64_t>::max();

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
    return kibibytes < 0 ? Unlimited : kibibytes * 1024;
}

std::int64_t ControlGroupFreeBytes() {
    const std::int64_t limit = NumberIn("/sys/fs/cgroup/memory.max", Unlimited);
    // Cached files count as used and are given up on demand.
    const std::int64_t cached = NumberAfter("/sys/fs/cgroup/memory.stat", "inactive_file", 0);
    return limit == Unlimited ? Unlimited : limit - NumberIn("/sys/fs/cgroup/memory.current", 0) + cached;
}

/// `Unlimited` where there is no limit.
std::int64_t AddressSpaceLimit() {
    rlimit limit = {};
    return getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY
               ? Unlimited
               : static_cast<std::int64_t>(limit.rlim_cur);
}

std::int64_t AddressSpaceFreeBytes() {
    const std::int64_t limit = AddressSpaceLimit();
    return limit == Unlimited ? Unlimited : limit - NumberIn("/proc/self/statm", 0) * sysconf(_SC_PAGESIZE);
}

/// Of a thread where the address space is limited: ample for libvips, which asks for as much.
constexpr std::int64_t StackBytes = 2 * Mebibyte;

/// Stacks take memory only as they are used, but address space at once.
std::int64_t StacksOfOnePicture() {
    return AddressSpaceLimit() == Unlimited ? 0 : StackBytes * ThreadsOfOnePicture();
}

} // namespace

std::int64_t EstimateBytes(const PictureShape& shape, std::int64_t workingBytes, const std::string& writer) {
    const std::int64_t picture = shape.Pixels() * shape.bands;
    const std::int64_t decoding = std::max(CoderBytes(shape.reader, shape), shape.Pixels() * shape.storedBytesPerPixel);
    const std::int64_t turning = shape.turned ? picture : 0;
    // Greyscale is spread over three channels for the library.
    const std::int64_t working = workingBytes + (shape.bands < 3 ? 3 * shape.Pixels() : 0);
    return shape.heldBytes + picture + std::max({decoding, turning, working, CoderBytes(writer, shape)}) + FixedBytes +
           StacksOfOnePicture();
}

std::int64_t FreeBytes() {
    return std::max<std::int64_t>(0, std::min({SystemFreeBytes(), ControlGroupFreeBytes(), AddressSpaceFreeBytes()}));
}

void SpareAddressSpace() {
    if (AddressSpaceLimit() == Unlimited) {
        return;
    }
    mallopt(M_ARENA_MAX, 1);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, static_cast<std::size_t>(StackBytes));
    pthread_setattr_default_np(&attributes);
    pthread_attr_destroy(&attributes);
}

std::string Mebibytes(std::int64_t bytes) {
    return std::to_string((bytes + Mebibyte - 1) / Mebibyte) + " MiB";
}

MemoryBudget::Share::Share(MemoryBudget& budget, std::int64_t bytes) : m_Budget(budget), m_Bytes(bytes) {
    if (bytes > budget.m_Total) {
        throw PictureError("needs about " + Mebibytes(bytes) + " of memory, but " + Mebibytes(budget.m_Total) +
                           " are free; free some or take a smaller picture");
    }
    std::unique_lock lock(budget.m_Mutex);
    // A signal handler cannot notify, so the wait looks up now and then.
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
