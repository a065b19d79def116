// The members of `KernelTable` in vector instructions. The contract of each slot is in claribox/KernelTable.h;
// here stands what is particular to the member. All take pointers of any alignment and leave the MMX state clear.
//
// Each runs its vector body over the whole passes and leaves the rest to the scalar rule of its slot, which differs
// from the body in places. Required: results depend on where body and tail meet, so neither rule may stand in for the
// other. Pinned, with all that is called required below, by tests/processor/KernelMembersTest.cpp.
//
// The sources are compiled with the instruction set of their class. They define no inline function with linkage and
// include no header that does: the linker might keep their copy, with their instructions, for the whole library.
#pragma once

#include "claribox/KernelTable.h"

namespace processor::mmx {

/// 8 elements a pass.
void PackS32ToU8(const std::int32_t* source, std::uint8_t* destination, std::uint32_t count);

/// 8 output bytes a pass, per row.
void DecimateU8(std::uint8_t* destination, const std::uint8_t* source, std::int32_t width, std::int32_t height);

} // namespace processor::mmx

namespace processor::sse {

/// `memcpy` with rules by size. From 64 KiB on it stores past the caches, from about 197 KiB on it also reads the
/// source ahead in blocks of 8 KiB.
void* StreamingCopy(void* destination, const void* source, std::uint32_t bytes);

/// 16 elements a pass, rounded by the mode in force (to nearest even by default) and saturated; a value beyond 32 bits
/// and NaN convert to the lowest integer and give 0. The tail is that of the plain member.
void PackF32ToU8(const float* source, std::uint8_t* destination, std::uint32_t count);

/// 16 elements a pass.
void ExpandU8ToF32(const std::uint8_t* source, float* destination, std::uint32_t count);

/// 4 elements a pass.
void ScaleF32(float* vector, float factor, std::int32_t count);

/// 4 elements a pass into four partial sums of 32 bits, which are then added to 0.0 from the lowest lane up; the tail
/// goes on in extended precision.
///
/// Required: the tail takes `count` mod 3 elements, not mod 4. It leaves out up to three of the vectors' own (3 of 3,
/// 2 of 7) and reads up to two past their end (elements 8 and 9 of 8), which the caller has to provide. Hosts that
/// were written against these sums would get others.
float DotF32(const float* first, const float* second, std::int32_t count);

/// 16 elements a pass.
void ExpandU8ToComplex(const std::uint8_t* source, ChComplex* destination, std::uint32_t count);

/// 16 elements a pass by the rule of `PackF32ToU8`, then `PackComplexTail`. Required: leaves the source alone, where
/// the plain member clamps it.
void PackComplexToU8(ChComplex* source, std::uint8_t* destination, std::uint32_t count);

/// The scalar rule of the vector members of this slot. Truncates and stores the low byte; NaN and values beyond 32
/// bits give 0. Required: nothing is clamped, so that 300.0 gives 44 and -1.0 gives 255.
void PackComplexTail(const ChComplex* source, std::uint8_t* destination, std::uint32_t count);

/// 4 elements a pass.
void ExpandF32ToComplex(const float* source, ChComplex* destination, std::uint32_t count);

} // namespace processor::sse

namespace processor::sse2 {

/// All 16 elements (`DecimateU8`: output bytes, per row) a pass, and byte for byte the results of the members above.
void PackS32ToU8(const std::int32_t* source, std::uint8_t* destination, std::uint32_t count);
void PackF32ToU8(const float* source, std::uint8_t* destination, std::uint32_t count);
void ExpandU8ToF32(const std::uint8_t* source, float* destination, std::uint32_t count);
void DecimateU8(std::uint8_t* destination, const std::uint8_t* source, std::int32_t width, std::int32_t height);
void ExpandU8ToComplex(const std::uint8_t* source, ChComplex* destination, std::uint32_t count);
void PackComplexToU8(ChComplex* source, std::uint8_t* destination, std::uint32_t count);

} // namespace processor::sse2
