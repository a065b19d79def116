// Vector types of the class being compiled, on the generic vectors of g++ and clang++: element-wise operators, no
// intrinsics but where an instruction has no generic form. For vector sources only.
//
// Everything stands in a namespace named after the class, so that no function compiled with wide instructions can be
// merged with a namesake that a narrow processor runs. For the same reason vector sources include no header with
// inline code that other sources use.
#pragma once

#if !defined(CLARIBOX_VECTOR_CLASS)
#error "listed with claribox_vector_sources() only"
#endif

#include <cstddef>
#include <cstdint>

#if !defined(CLARIBOX_VECTOR_Portable)
#include <immintrin.h>
#endif

namespace simd::CLARIBOX_VECTOR_CLASS {

#if defined(CLARIBOX_VECTOR_AVX512)
inline constexpr std::size_t kVectorBytes = 64;
#elif defined(CLARIBOX_VECTOR_AVX2)
inline constexpr std::size_t kVectorBytes = 32;
#else
inline constexpr std::size_t kVectorBytes = 16;
#endif

/// `kLanes<T>` elements fill a vector.
template <typename T>
inline constexpr int kLanes = static_cast<int>(kVectorBytes / sizeof(T));

/// A vector of `lanes` elements of T.
template <typename T, int lanes>
struct VectorOf {
    typedef T Type __attribute__((vector_size(static_cast<std::size_t>(lanes) * sizeof(T))));
};

using I16 = VectorOf<std::int16_t, kLanes<std::int16_t>>::Type;
using I32 = VectorOf<std::int32_t, kLanes<std::int32_t>>::Type;
using U16 = VectorOf<std::uint16_t, kLanes<std::uint16_t>>::Type;
using U32 = VectorOf<std::uint32_t, kLanes<std::uint32_t>>::Type;
using F32 = VectorOf<float, kLanes<float>>::Type;
using F64 = VectorOf<double, kLanes<double>>::Type;

/// Reads a vector from any address.
template <typename Vector>
inline Vector Load(const void* address) {
    Vector vector;
    __builtin_memcpy(&vector, address, sizeof vector);
    return vector;
}

/// Writes a vector to any address.
template <typename Vector>
inline void Store(void* address, Vector vector) {
    __builtin_memcpy(address, &vector, sizeof vector);
}

/// The `kLanes<std::uint32_t>` bytes at any address, widened. g++ 12 widens generic vectors of bytes one by one.
inline U32 LoadWidenedU8(const std::uint8_t* address) {
#if defined(CLARIBOX_VECTOR_AVX512)
    return reinterpret_cast<U32>(
        _mm512_maskz_cvtepu8_epi32(0xFFFF, _mm_loadu_si128(reinterpret_cast<const __m128i*>(address))));
#elif defined(CLARIBOX_VECTOR_AVX2)
    return reinterpret_cast<U32>(_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(address))));
#elif defined(CLARIBOX_VECTOR_SSE2)
    const __m128i zero = _mm_setzero_si128();
    const __m128i bytes = _mm_loadu_si32(address);
    return reinterpret_cast<U32>(_mm_unpacklo_epi16(_mm_unpacklo_epi8(bytes, zero), zero));
#else
    using Bytes = VectorOf<std::uint8_t, kLanes<std::uint32_t>>::Type;
    return __builtin_convertvector(Load<Bytes>(address), U32);
#endif
}

/// a + b in unsigned arithmetic, which wraps.
inline I32 WrappingAdd(I32 a, I32 b) {
    return reinterpret_cast<I32>(reinterpret_cast<U32>(a) + reinterpret_cast<U32>(b));
}
inline I16 WrappingAdd(I16 a, I16 b) {
    return reinterpret_cast<I16>(reinterpret_cast<U16>(a) + reinterpret_cast<U16>(b));
}

/// Lane k of the result is a[2k]*b[2k] + a[2k+1]*b[2k+1] in 32 bits.
inline I32 MultiplyAddPairs(I16 a, I16 b) {
#if defined(CLARIBOX_VECTOR_AVX512)
    return reinterpret_cast<I32>(_mm512_madd_epi16(reinterpret_cast<__m512i>(a), reinterpret_cast<__m512i>(b)));
#elif defined(CLARIBOX_VECTOR_AVX2)
    return reinterpret_cast<I32>(_mm256_madd_epi16(reinterpret_cast<__m256i>(a), reinterpret_cast<__m256i>(b)));
#elif defined(CLARIBOX_VECTOR_SSE2)
    return reinterpret_cast<I32>(_mm_madd_epi16(reinterpret_cast<__m128i>(a), reinterpret_cast<__m128i>(b)));
#else
    const I32 evenA = reinterpret_cast<I32>(reinterpret_cast<U32>(a) << 16) >> 16;
    const I32 evenB = reinterpret_cast<I32>(reinterpret_cast<U32>(b) << 16) >> 16;
    const I32 oddA = reinterpret_cast<I32>(a) >> 16;
    const I32 oddB = reinterpret_cast<I32>(b) >> 16;
    return evenA * evenB + oddA * oddB;
#endif
}

} // namespace simd::CLARIBOX_VECTOR_CLASS
