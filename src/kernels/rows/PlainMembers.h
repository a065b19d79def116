// The plain members of the ten slots of `KernelTable`: element by element, in index order, for any processor. The
// contract of each stands at its slot in claribox/KernelTable.h.
#pragma once

#include "claribox/KernelTable.h"

namespace kernels {

void* Copy(void* destination, const void* source, std::uint32_t bytes);

void PackS32ToU8(const std::int32_t* source, std::uint8_t* destination, std::uint32_t count);

/// Truncates toward zero; below 0 gives 0, above 255 gives 255, NaN gives 0.
void PackF32ToU8(const float* source, std::uint8_t* destination, std::uint32_t count);

void ExpandU8ToF32(const std::uint8_t* source, float* destination, std::uint32_t count);

void ScaleF32(float* vector, float factor, std::int32_t count);

/// Sums in extended precision (`long double`) in index order and rounds once; 0 where `count` is zero or below.
float DotF32(const float* first, const float* second, std::int32_t count);

void DecimateU8(std::uint8_t* destination, const std::uint8_t* source, std::int32_t width, std::int32_t height);

void ExpandU8ToComplex(const std::uint8_t* source, ChComplex* destination, std::uint32_t count);

/// Clamps each real part to 0..255 (NaN becomes 0), stores the clamped value back into `source` and truncates it.
/// Imaginary parts are neither read nor written. Two threads must not share a source.
void PackComplexToU8(ChComplex* source, std::uint8_t* destination, std::uint32_t count);

void ExpandF32ToComplex(const float* source, ChComplex* destination, std::uint32_t count);

} // namespace kernels
