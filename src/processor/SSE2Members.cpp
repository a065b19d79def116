#include "processor/VectorMembers.h"

#include "processor/ComplexVectors.h"
#include "processor/VectorPasses.h"

#include <emmintrin.h>

namespace processor::sse2 {
namespace {

template <typename T>
__m128i Load(const T* address) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(address));
}

void Store(std::uint8_t* address, __m128i vector) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(address), vector);
}

/// Stores 16 bytes, saturated from the 32-bit integers that `load(k)` gives for elements k to k + 3.
template <typename LoadFour>
void PackSixteen(std::uint8_t* destination, LoadFour load) {
    const __m128i low = _mm_packs_epi32(load(0), load(4));
    const __m128i high = _mm_packs_epi32(load(8), load(12));
    Store(destination, _mm_packus_epi16(low, high));
}

/// Hands elements k to k + 3 of 16 bytes to `store(k, four)`, widened to floats.
template <typename StoreFour>
void ExpandSixteen(const std::uint8_t* source, StoreFour store) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i bytes = Load(source);
    const __m128i halves[] = {_mm_unpacklo_epi8(bytes, zero), _mm_unpackhi_epi8(bytes, zero)};
    for (std::uint32_t k = 0; k < 2; ++k) {
        store(8 * k, _mm_cvtepi32_ps(_mm_unpacklo_epi16(halves[k], zero)));
        store(8 * k + 4, _mm_cvtepi32_ps(_mm_unpackhi_epi16(halves[k], zero)));
    }
}

} // namespace

void PackS32ToU8(const std::int32_t* source, std::uint8_t* destination, std::uint32_t count) {
    const std::uint32_t whole = InWholePasses<16>(count);
    for (std::uint32_t i = 0; i < whole; i += 16) {
        PackSixteen(destination + i, [from = source + i](std::uint32_t k) { return Load(from + k); });
    }
    kernels::PackS32ToU8(source + whole, destination + whole, count - whole);
}

void PackF32ToU8(const float* source, std::uint8_t* destination, std::uint32_t count) {
    const std::uint32_t whole = InWholePasses<16>(count);
    for (std::uint32_t i = 0; i < whole; i += 16) {
        PackSixteen(destination + i,
                    [from = source + i](std::uint32_t k) { return _mm_cvtps_epi32(_mm_loadu_ps(from + k)); });
    }
    kernels::PackF32ToU8(source + whole, destination + whole, count - whole);
}

void ExpandU8ToF32(const std::uint8_t* source, float* destination, std::uint32_t count) {
    const std::uint32_t whole = InWholePasses<16>(count);
    for (std::uint32_t i = 0; i < whole; i += 16) {
        ExpandSixteen(source + i,
                      [to = destination + i](std::uint32_t k, __m128 four) { _mm_storeu_ps(to + k, four); });
    }
    kernels::ExpandU8ToF32(source + whole, destination + whole, count - whole);
}

void DecimateU8(std::uint8_t* destination, const std::uint8_t* source, std::int32_t width, std::int32_t height) {
    DecimateRows<16>(destination, source, width, height, [](const std::uint8_t* row, std::uint8_t* output) {
        const __m128i evenBytes = _mm_set1_epi16(0x00FF);
        Store(output, _mm_packus_epi16(_mm_and_si128(Load(row), evenBytes), _mm_and_si128(Load(row + 16), evenBytes)));
    });
}

void ExpandU8ToComplex(const std::uint8_t* source, ChComplex* destination, std::uint32_t count) {
    const std::uint32_t whole = InWholePasses<16>(count);
    for (std::uint32_t i = 0; i < whole; i += 16) {
        ExpandSixteen(source + i, [to = destination + i](std::uint32_t k, __m128 four) { StoreComplex(to + k, four); });
    }
    kernels::ExpandU8ToComplex(source + whole, destination + whole, count - whole);
}

void PackComplexToU8(ChComplex* source, std::uint8_t* destination, std::uint32_t count) {
    const std::uint32_t whole = InWholePasses<16>(count);
    for (std::uint32_t i = 0; i < whole; i += 16) {
        PackSixteen(destination + i,
                    [from = source + i](std::uint32_t k) { return _mm_cvtps_epi32(LoadReal(from + k)); });
    }
    sse::PackComplexTail(source + whole, destination + whole, count - whole);
}

} // namespace processor::sse2
