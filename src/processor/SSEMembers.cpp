#include "processor/VectorMembers.h"

#include "processor/ComplexVectors.h"
#include "processor/VectorPasses.h"

#include <xmmintrin.h>

namespace processor::sse {
namespace {

/// A float, or the real part of a pair, at any address.
template <typename T>
float LoadFloat(const T* address) {
    float value;
    __builtin_memcpy(&value, address, sizeof value);
    return value;
}

/// 16 bytes from what `load(k)` gives for elements k to k + 3.
template <typename LoadFour>
void PackSixteen(std::uint8_t* destination, LoadFour load) {
    for (std::uint32_t k = 0; k < 16; k += 8) {
        const __m64 bytes = _mm_packs_pu16(_mm_cvtps_pi16(load(k)), _mm_cvtps_pi16(load(k + 4)));
        __builtin_memcpy(destination + k, &bytes, sizeof bytes);
    }
}

/// Hands elements k to k + 3 of 16 bytes to `store(k, four)`, widened to floats.
template <typename StoreFour>
void ExpandSixteen(const std::uint8_t* source, StoreFour store) {
    for (std::uint32_t k = 0; k < 16; k += 8) {
        __m64 bytes;
        __builtin_memcpy(&bytes, source + k, sizeof bytes);
        store(k, _mm_cvtpu8_ps(bytes));
        store(k + 4, _mm_cvtpu8_ps(_mm_unpackhi_pi32(bytes, bytes)));
    }
}

} // namespace

void PackF32ToU8(const float* source, std::uint8_t* destination, std::uint32_t count) {
    const std::uint32_t whole = InWholePasses<16>(count);
    for (std::uint32_t i = 0; i < whole; i += 16) {
        PackSixteen(destination + i, [four = source + i](std::uint32_t k) { return _mm_loadu_ps(four + k); });
    }
    _mm_empty();
    kernels::PackF32ToU8(source + whole, destination + whole, count - whole);
}

void ExpandU8ToF32(const std::uint8_t* source, float* destination, std::uint32_t count) {
    const std::uint32_t whole = InWholePasses<16>(count);
    for (std::uint32_t i = 0; i < whole; i += 16) {
        ExpandSixteen(source + i,
                      [to = destination + i](std::uint32_t k, __m128 four) { _mm_storeu_ps(to + k, four); });
    }
    _mm_empty();
    kernels::ExpandU8ToF32(source + whole, destination + whole, count - whole);
}

void ScaleF32(float* vector, float factor, std::int32_t count) {
    const std::int32_t whole = count > 0 ? count - count % 4 : 0;
    for (std::int32_t i = 0; i < whole; i += 4) {
        _mm_storeu_ps(vector + i, _mm_mul_ps(_mm_loadu_ps(vector + i), _mm_set1_ps(factor)));
    }
    kernels::ScaleF32(vector + whole, factor, count - whole);
}

float DotF32(const float* first, const float* second, std::int32_t count) {
    if (count <= 0) {
        return 0.0f;
    }
    const std::int32_t whole = count - count % 4;
    __m128 sums = _mm_setzero_ps();
    for (std::int32_t i = 0; i < whole; i += 4) {
        sums = _mm_add_ps(sums, _mm_mul_ps(_mm_loadu_ps(first + i), _mm_loadu_ps(second + i)));
    }
    float lanes[4];
    _mm_storeu_ps(lanes, sums);
    long double sum = 0.0L;
    for (const float lane : lanes) {
        sum += static_cast<long double>(lane);
    }
    const std::int32_t tail = count % 3; // required, see the declaration
    for (std::int32_t i = 0; i < tail; ++i) {
        sum += static_cast<long double>(LoadFloat(first + whole + i)) *
               static_cast<long double>(LoadFloat(second + whole + i));
    }
    return static_cast<float>(sum);
}

void ExpandU8ToComplex(const std::uint8_t* source, ChComplex* destination, std::uint32_t count) {
    const std::uint32_t whole = InWholePasses<16>(count);
    for (std::uint32_t i = 0; i < whole; i += 16) {
        ExpandSixteen(source + i, [to = destination + i](std::uint32_t k, __m128 four) { StoreComplex(to + k, four); });
    }
    _mm_empty();
    kernels::ExpandU8ToComplex(source + whole, destination + whole, count - whole);
}

void PackComplexToU8(ChComplex* source, std::uint8_t* destination, std::uint32_t count) {
    const std::uint32_t whole = InWholePasses<16>(count);
    for (std::uint32_t i = 0; i < whole; i += 16) {
        PackSixteen(destination + i, [from = source + i](std::uint32_t k) { return LoadReal(from + k); });
    }
    _mm_empty();
    PackComplexTail(source + whole, destination + whole, count - whole);
}

void PackComplexTail(const ChComplex* source, std::uint8_t* destination, std::uint32_t count) {
    for (std::uint32_t i = 0; i < count; ++i) {
        // Exact also where it does not fit: the instruction then gives 0x80000000, and the low byte of any float beyond
        // 32 bits is 0.
        destination[i] = static_cast<std::uint8_t>(_mm_cvttss_si32(_mm_set_ss(LoadFloat(source + i))));
    }
}

void ExpandF32ToComplex(const float* source, ChComplex* destination, std::uint32_t count) {
    const std::uint32_t whole = InWholePasses<4>(count);
    for (std::uint32_t i = 0; i < whole; i += 4) {
        StoreComplex(destination + i, _mm_loadu_ps(source + i));
    }
    kernels::ExpandF32ToComplex(source + whole, destination + whole, count - whole);
}

} // namespace processor::sse
