#include "processor/VectorMembers.h"

#include <xmmintrin.h>

namespace processor::sse {
namespace {

constexpr std::uint32_t kLine = 64;            // bytes of a cache line, and of a pass
constexpr std::uint32_t kBlockLines = 128;     // 8 KiB; given, as are the next three
constexpr std::uint32_t kFirstStreamed = 1024; // lines, 64 KiB
constexpr std::uint32_t kFirstInBlocks = 3152; // lines, about 197 KiB
constexpr std::uintptr_t kPrefetchAhead = 568; // bytes

struct Position {
    std::uint8_t* destination;
    const std::uint8_t* source;

    void Move(std::uint32_t bytes) {
        destination += bytes;
        source += bytes;
    }
};

template <typename T>
void CopyOne(Position& at) {
    T value;
    __builtin_memcpy(&value, at.source, sizeof value);
    __builtin_memcpy(at.destination, &value, sizeof value);
    at.Move(sizeof value);
}

void StoreCached(std::uint8_t* address, __m64 vector) {
    __builtin_memcpy(address, &vector, sizeof vector);
}

void StoreStreamed(std::uint8_t* address, __m64 vector) {
    _mm_stream_pi(reinterpret_cast<__m64*>(address), vector);
}

/// Copies the line from `offset` on and moves to the next, through registers alone: calls and loops on the way cost
/// more than the copying.
template <void (*store)(std::uint8_t*, __m64), std::uint32_t offset = 0>
[[gnu::always_inline]] inline void CopyLine(Position& at) {
    if constexpr (offset < kLine) {
        __m64 vector;
        __builtin_memcpy(&vector, at.source + offset, sizeof vector);
        store(at.destination + offset, vector);
        CopyLine<store, offset + sizeof(__m64)>(at);
    } else {
        at.Move(kLine);
    }
}

template <void (*store)(std::uint8_t*, __m64)>
void CopyLines(Position& at, std::uint32_t lines) {
    for (; lines > 0; --lines) {
        // May lie behind the source, where nothing is read, since a prefetch is a hint that never faults; but where a
        // pointer may not be moved to, hence the integer.
        const std::uintptr_t ahead = reinterpret_cast<std::uintptr_t>(at.source) + kPrefetchAhead;
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        _mm_prefetch(reinterpret_cast<const char*>(ahead), _MM_HINT_NTA);
        CopyLine<store>(at);
    }
}

/// Reads one word of each line, last line first, which brings the block into the cache in an order that the hardware's
/// own prefetching does not disturb.
void ReadBlockBackward(const std::uint8_t* source) {
    for (std::uint32_t line = kBlockLines; line-- > 0;) {
        std::uint32_t word;
        __builtin_memcpy(&word, source + line * kLine, sizeof word);
        asm volatile("" : : "r"(word)); // keeps the read
    }
}

} // namespace

void* StreamingCopy(void* destination, const void* source, std::uint32_t bytes) {
    Position at = {static_cast<std::uint8_t*>(destination), static_cast<const std::uint8_t*>(source)};
    if (bytes >= kLine && (bytes <= 32768 || bytes > 65536)) {
        for (; reinterpret_cast<std::uintptr_t>(at.destination) % sizeof(__m64) != 0; --bytes) {
            CopyOne<std::uint8_t>(at);
        }
    }
    std::uint32_t lines = bytes / kLine;
    if (lines < kFirstStreamed) {
        CopyLines<StoreCached>(at, lines);
    } else {
        if (lines >= kFirstInBlocks) {
            for (; lines >= kBlockLines; lines -= kBlockLines) {
                ReadBlockBackward(at.source);
                for (std::uint32_t k = 0; k < kBlockLines; ++k) {
                    CopyLine<StoreStreamed>(at);
                }
            }
        }
        CopyLines<StoreStreamed>(at, lines);
    }
    for (bytes %= kLine; bytes >= sizeof(std::uint32_t); bytes -= static_cast<std::uint32_t>(sizeof(std::uint32_t))) {
        CopyOne<std::uint32_t>(at);
    }
    for (; bytes > 0; --bytes) {
        CopyOne<std::uint8_t>(at);
    }
    _mm_empty();
    _mm_sfence(); // streamed stores are not ordered otherwise, and another thread may be notified of the copy next
    return destination;
}

} // namespace processor::sse
