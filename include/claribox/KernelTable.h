// The row primitives of the library, chosen once at load for the processor, and the allocator of planes and spectra.
#pragma once

#include "Export.h"

#include <cstddef>
#include <cstdint>

/// One complex number of a spectrum: two adjacent 32-bit floats, real part first.
struct ChComplex {
    float re;
    float im;
};

/// Ten row primitives. Source and destination must not overlap; no pointer needs any alignment; a count of zero
/// (for the signed counts: zero or below) does nothing. All are re-entrant and none reports an error.
struct KernelTableSlots {
    /// Copies `bytes` bytes with the contract of `memcpy` and returns `destination`.
    void* (*Copy)(void* destination, const void* source, std::uint32_t bytes);

    /// Narrows `count` signed integers to bytes, saturating to 0..255. All processor classes agree.
    void (*PackS32ToU8)(const std::int32_t* source, std::uint8_t* destination, std::uint32_t count);

    /// Narrows `count` floats to bytes, saturating to 0..255. The plain member truncates toward zero; vector members
    /// round by the rounding mode in force, to nearest even by default, in whole passes of 16 and truncate the last
    /// `count` mod 16 elements. NaN gives 0.
    void (*PackF32ToU8)(const float* source, std::uint8_t* destination, std::uint32_t count);

    /// Widens `count` bytes to the exact floats of their values.
    void (*ExpandU8ToF32)(const std::uint8_t* source, float* destination, std::uint32_t count);

    /// Multiplies `count` floats by `factor` in place.
    void (*ScaleF32)(float* vector, float factor, std::int32_t count);

    /// Returns the sum of products of two vectors of `count` floats. The plain member sums in extended precision in
    /// index order; vector members keep four partial sums over whole passes of 4 and then take `count` mod 3 further
    /// elements, required as it stands: they leave some out at the end of some counts, and read up to two elements past
    /// `count` at others, which the caller must provide.
    float (*DotF32)(const float* first, const float* second, std::int32_t count);

    /// Halves a tight plane of `width` by `height` bytes by picking: destination (x, y) is source (2x, 2y). The
    /// destination is tight with width/2 columns and height/2 rows, both truncating. Nothing is filtered.
    void (*DecimateU8)(std::uint8_t* destination, const std::uint8_t* source, std::int32_t width, std::int32_t height);

    /// Widens `count` bytes v to the pairs (v, 0.0).
    void (*ExpandU8ToComplex)(const std::uint8_t* source, ChComplex* destination, std::uint32_t count);

    /// Narrows the real parts of `count` pairs to bytes. The plain member clamps to 0..255, stores the clamped value
    /// back into the source and truncates; vector members leave the source alone, round as PackF32ToU8
    /// does with saturation in whole passes of 16, and truncate the rest to its low byte without a clamp.
    void (*PackComplexToU8)(ChComplex* source, std::uint8_t* destination, std::uint32_t count);

    /// Widens `count` floats v to the pairs (v, 0.0).
    void (*ExpandF32ToComplex)(const float* source, ChComplex* destination, std::uint32_t count);
};

/// The primitives in force. Complete before any host code runs, and constant from then on.
extern CLARIBOX_API KernelTableSlots KernelTable;

/// Returns a block of `size` bytes whose address is a multiple of `alignment`, or null where `alignment` is below 8.
/// An alignment need not be a power of two. Release the block with `ChAlignedFree` alone. Exhausted memory is not
/// reported: the call then faults.
CLARIBOX_API void* ChAlignedAlloc(std::size_t size, int alignment);

/// Releases a block from `ChAlignedAlloc`. `block` must not be null.
CLARIBOX_API void ChAlignedFree(void* block);
