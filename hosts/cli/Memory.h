// What there is to know of a picture before it is decoded: its shape, how much memory it will take, how much there is,
// and pictures waiting until enough of it is free.
#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>

namespace cli {

/// What the checks and the estimate need to know of a picture.
struct PictureShape {
    int width; ///< as stored: turning may exchange it with the height
    int height;
    int bands;               ///< as it is worked on: 1 to 4 bytes a pixel
    int storedBytesPerPixel; ///< as it is decoded
    bool turned;             ///< orientation has to be applied, which takes a second copy
    std::string reader;      ///< libvips' name of it, such as "jpegload_source"
    std::int64_t heldBytes;  ///< of the undecoded picture

    int SmallerSide() const { return std::min(width, height); }
    std::int64_t Pixels() const { return std::int64_t{width} * height; }
};

/// An upper estimate of the bytes one picture takes at its peak; `workingBytes` are the operation's own, `writer` is
/// libvips' name, such as "jpegsave".
std::int64_t EstimateBytes(const PictureShape& shape, std::int64_t workingBytes, const std::string& writer);

/// Bytes this process can still take: the least of what the system has available, what the process's control group
/// allows and what its address space limit leaves.
std::int64_t FreeBytes();

/// Where the address space is limited (ulimit -v), keeps the process from reserving much of it that it never fills:
/// memory of its own for each thread that asks for some, and stacks of 8 MiB. To be called before threads are started
/// and after `vips_init`, which sets stacks too.
void SpareAddressSpace();

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
