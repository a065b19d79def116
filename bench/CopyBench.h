// The two members of the slot `KernelTable.Copy` beside each other.
#pragma once

namespace bench {

/// Registers `Copy/BYTES/memcpy` and, where the processor has SSE, `Copy/BYTES/streaming` from 64 bytes to 64 MiB, with
/// every size at which the streaming copy changes its ways. Source and destination are two blocks at multiples of 64
/// that are copied over and over: sizes that fit a cache are measured in it. The time is that of the process; the
/// output is compared before. Counter: `ns_per_KiB`, nanoseconds for 1024 bytes.
void RegisterCopyBenchmarks();

} // namespace bench
