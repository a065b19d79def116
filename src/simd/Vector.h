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
using I64 = VectorOf<std::int64_t, kLanes<std::int64_t>>::Type;
using U16 = VectorOf<std::uint16_t, kLanes<std::uint16_t>>::Type;
using U32 = VectorOf<std::uint32_t, kLanes<std::uint32_t>>::Type;
using U64 = VectorOf<std::uint64_t, kLanes<std::uint64_t>>::Type;
using F32 = VectorOf<float, kLanes<float>>::Type;
using F64 = VectorOf<double, kLanes<double>>::Type;

/// The numbers 0 .. count - 1 as types.
template <int count, int... before>
struct Indices : Indices<count - 1, count - 1, before...> {};
template <int... indices>
struct Indices<0, indices...> {};

/// Calls work(k) for each k from 0 to count - 1 in straight-line code, so that arrays of vectors indexed by k become
/// registers: g++ 12 leaves them in memory where it unrolls a loop itself.
template <int... indices, typename Work>
inline void ForEachOf(Indices<0, indices...>, Work work) {
    (work(indices), ...);
}
template <int count, typename Work>
inline void Unrolled(Work work) {
    ForEachOf(Indices<count>{}, work);
}

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

/// The `kLanes<std::uint16_t>` bytes at any address, widened. g++ 12 widens generic vectors of bytes one by one.
inline U16 LoadWidenedU8(const std::uint8_t* address) {
#if defined(CLARIBOX_VECTOR_AVX512)
    return reinterpret_cast<U16>(_mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(address))));
#elif defined(CLARIBOX_VECTOR_AVX2)
    return reinterpret_cast<U16>(_mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(address))));
#elif defined(CLARIBOX_VECTOR_SSE2)
    const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(address));
    return reinterpret_cast<U16>(_mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
#else
    using Bytes = VectorOf<std::uint8_t, kLanes<std::uint16_t>>::Type;
    return __builtin_convertvector(Load<Bytes>(address), U16);
#endif
}

/// Two vectors of 32-bit lanes that hold the columns 0 .. 2 * kLanes - 1 of a row in split order: `even` those of the
/// fours 0, 2, 4 .. of columns, `odd` those of the fours 1, 3, 5 .. . It is the order in which the instructions that
/// interleave and pack within 16 bytes produce and expect.
template <typename Vector>
struct SplitColumns {
    Vector even;
    Vector odd;
};

/// For each column the 16-bit numbers of a and b side by side, that of a in the low half.
inline SplitColumns<U32> Interleave(U16 a, U16 b) {
#if defined(CLARIBOX_VECTOR_AVX512)
    const __m512i first = reinterpret_cast<__m512i>(a);
    const __m512i second = reinterpret_cast<__m512i>(b);
    return {reinterpret_cast<U32>(_mm512_unpacklo_epi16(first, second)),
            reinterpret_cast<U32>(_mm512_unpackhi_epi16(first, second))};
#elif defined(CLARIBOX_VECTOR_AVX2)
    const __m256i first = reinterpret_cast<__m256i>(a);
    const __m256i second = reinterpret_cast<__m256i>(b);
    return {reinterpret_cast<U32>(_mm256_unpacklo_epi16(first, second)),
            reinterpret_cast<U32>(_mm256_unpackhi_epi16(first, second))};
#else
    return {reinterpret_cast<U32>(__builtin_shufflevector(a, b, 0, 8, 1, 9, 2, 10, 3, 11)),
            reinterpret_cast<U32>(__builtin_shufflevector(a, b, 4, 12, 5, 13, 6, 14, 7, 15))};
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

#if defined(CLARIBOX_VECTOR_SSE2)
/// a + b rounded to odd: of the two doubles around an inexact sum the one whose last bit is set. Rounding that to float
/// gives what one rounding of the exact sum gives (S. Boldo, G. Melquiond, "Emulation of FMA and correctly rounded
/// sums: proved algorithms using rounding to odd", 2008). The thread rounds to nearest, as it does by default.
inline F64 AddToOdd(F64 a, F64 b) {
    const F64 sum = a + b;
    const F64 part = sum - a;
    const F64 error = (a - (sum - part)) + (b - part); // exact (D. E. Knuth); NaN beside an infinite sum, which stays
    const U64 inexact = reinterpret_cast<U64>((error < 0.0) | (error > 0.0));
    const U64 away = inexact & (reinterpret_cast<U64>(sum) ^ reinterpret_cast<U64>(error)); // in the sign bit
    return reinterpret_cast<F64>((reinterpret_cast<U64>(sum) - (away >> 63)) | inexact >> 63);
}
#endif

/// a * b + c rounded once. Where there is no instruction for it, the sum of the exact product is rounded to double and
/// to float: that goes wrong only from the middle between two floats, where the last 28 bits of the double are 0.
inline F32 MultiplyAdd(F32 a, F32 b, F32 c) {
#if defined(CLARIBOX_VECTOR_AVX512)
    return reinterpret_cast<F32>(_mm512_fmadd_ps(a, b, c));
#elif defined(CLARIBOX_VECTOR_AVX2)
    return reinterpret_cast<F32>(_mm256_fmadd_ps(a, b, c));
#elif defined(CLARIBOX_VECTOR_SSE2)
    const F64 lowProduct = _mm_cvtps_pd(a) * _mm_cvtps_pd(b);
    const F64 highProduct = _mm_cvtps_pd(_mm_movehl_ps(a, a)) * _mm_cvtps_pd(_mm_movehl_ps(b, b));
    const F64 lowAddend = _mm_cvtps_pd(c);
    const F64 highAddend = _mm_cvtps_pd(_mm_movehl_ps(c, c));
    F64 low = lowProduct + lowAddend;
    F64 high = highProduct + highAddend;
    const F32 lastBits = _mm_shuffle_ps(reinterpret_cast<F32>(low), reinterpret_cast<F32>(high), 0x88);
    if (_mm_movemask_ps(reinterpret_cast<F32>(reinterpret_cast<U32>(lastBits) << 4 == 0u)) != 0) [[unlikely]] {
        low = AddToOdd(lowProduct, lowAddend);
        high = AddToOdd(highProduct, highAddend);
    }
    return _mm_movelh_ps(_mm_cvtpd_ps(low), _mm_cvtpd_ps(high));
#else
    F32 result;
    for (int k = 0; k < kLanes<float>; ++k) {
        const double sum = static_cast<double>(a[k]) * static_cast<double>(b[k]) + static_cast<double>(c[k]);
        std::uint64_t bits;
        __builtin_memcpy(&bits, &sum, sizeof bits);
        volatile float stored = static_cast<float>(sum); // which rounds in x87 code too
        const float rounded = stored;
        result[k] = bits << 36 != 0 || static_cast<double>(rounded) == sum ? rounded : __builtin_fmaf(a[k], b[k], c[k]);
    }
    return result;
#endif
}
inline float MultiplyAdd(float a, float b, float c) {
#if defined(__FMA__)
    return __builtin_fmaf(a, b, c);
#else
    return MultiplyAdd(F32{a}, F32{b}, F32{c})[0];
#endif
}

/// sum + MultiplyAddPairs(a, b); the addition wraps.
inline I32 AddProductPairs(I32 sum, I16 a, I16 b) {
#if defined(CLARIBOX_VECTOR_AVX512)
    return reinterpret_cast<I32>(_mm512_dpwssd_epi32(reinterpret_cast<__m512i>(sum), reinterpret_cast<__m512i>(a),
                                                     reinterpret_cast<__m512i>(b)));
#else
    return WrappingAdd(sum, MultiplyAddPairs(a, b));
#endif
}

/// A double for each lane of a vector of 32-bit lanes, in order.
struct F64Pair {
    F64 low;
    F64 high;
};

/// The lanes of x as doubles, the lower half of them in `low`.
inline F64Pair Widen(F32 x) {
#if defined(CLARIBOX_VECTOR_AVX512)
    return {_mm512_maskz_cvtps_pd(0xFF, _mm512_castps512_ps256(x)),
            _mm512_maskz_cvtps_pd(0xFF, _mm512_extractf32x8_ps(x, 1))};
#elif defined(CLARIBOX_VECTOR_AVX2)
    return {_mm256_cvtps_pd(_mm256_castps256_ps128(x)), _mm256_cvtps_pd(_mm256_extractf128_ps(x, 1))};
#elif defined(CLARIBOX_VECTOR_SSE2)
    return {_mm_cvtps_pd(x), _mm_cvtps_pd(_mm_movehl_ps(x, x))};
#else
    F64Pair wide{};
    for (int k = 0; k < kLanes<double>; ++k) {
        wide.low[k] = static_cast<double>(x[k]);
        wide.high[k] = static_cast<double>(x[k + kLanes<double>]);
    }
    return wide;
#endif
}

/// Each lane rounded to float.
inline F32 Narrow(F64Pair wide) {
#if defined(CLARIBOX_VECTOR_AVX512)
    return _mm512_insertf32x8(_mm512_castps256_ps512(_mm512_maskz_cvtpd_ps(0xFF, wide.low)),
                              _mm512_maskz_cvtpd_ps(0xFF, wide.high), 1);
#elif defined(CLARIBOX_VECTOR_AVX2)
    return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm256_cvtpd_ps(wide.low)), _mm256_cvtpd_ps(wide.high), 1);
#elif defined(CLARIBOX_VECTOR_SSE2)
    return _mm_movelh_ps(_mm_cvtpd_ps(wide.low), _mm_cvtpd_ps(wide.high));
#else
    F32 x{};
    for (int k = 0; k < kLanes<double>; ++k) {
        volatile float low = static_cast<float>(wide.low[k]); // a store, which rounds in x87 code too
        volatile float high = static_cast<float>(wide.high[k]);
        x[k] = low;
        x[k + kLanes<double>] = high;
    }
    return x;
#endif
}

/// The doubles of columns 0 .. 2 * kLanes<std::int32_t> - 1, from any address.
inline SplitColumns<F64Pair> LoadSplit(const double* address) {
#if defined(CLARIBOX_VECTOR_AVX512)
    const auto fours = [address](int first) {
        return reinterpret_cast<F64>(_mm512_insertf64x4(_mm512_castpd256_pd512(_mm256_loadu_pd(address + 4 * first)),
                                                        _mm256_loadu_pd(address + 4 * first + 8), 1));
    };
    return {{fours(0), fours(4)}, {fours(1), fours(5)}};
#elif defined(CLARIBOX_VECTOR_AVX2)
    return {{Load<F64>(address), Load<F64>(address + 8)}, {Load<F64>(address + 4), Load<F64>(address + 12)}};
#else
    return {{Load<F64>(address), Load<F64>(address + 2)}, {Load<F64>(address + 4), Load<F64>(address + 6)}};
#endif
}

/// number * factor truncated toward zero. A product of 2^31 or more gives one that is negative, as it comes out of the
/// processor's conversion.
inline I32 TruncatedProducts(I32 numbers, F64Pair factors) {
#if defined(CLARIBOX_VECTOR_AVX512)
    const __m512i all = reinterpret_cast<__m512i>(numbers);
    const __m512d low = _mm512_cvtepi32_pd(_mm512_castsi512_si256(all));
    const __m512d high = _mm512_cvtepi32_pd(_mm512_extracti64x4_epi64(all, 1));
    const __m256i lowProducts = _mm512_cvttpd_epi32(_mm512_mul_pd(low, reinterpret_cast<__m512d>(factors.low)));
    const __m256i highProducts = _mm512_cvttpd_epi32(_mm512_mul_pd(high, reinterpret_cast<__m512d>(factors.high)));
    return reinterpret_cast<I32>(_mm512_inserti64x4(_mm512_castsi256_si512(lowProducts), highProducts, 1));
#elif defined(CLARIBOX_VECTOR_AVX2)
    const __m256i all = reinterpret_cast<__m256i>(numbers);
    const __m256d low = _mm256_cvtepi32_pd(_mm256_castsi256_si128(all));
    const __m256d high = _mm256_cvtepi32_pd(_mm256_extracti128_si256(all, 1));
    const __m128i lowProducts = _mm256_cvttpd_epi32(_mm256_mul_pd(low, reinterpret_cast<__m256d>(factors.low)));
    const __m128i highProducts = _mm256_cvttpd_epi32(_mm256_mul_pd(high, reinterpret_cast<__m256d>(factors.high)));
    return reinterpret_cast<I32>(_mm256_inserti128_si256(_mm256_castsi128_si256(lowProducts), highProducts, 1));
#elif defined(CLARIBOX_VECTOR_SSE2)
    const __m128i all = reinterpret_cast<__m128i>(numbers);
    const __m128d low = _mm_cvtepi32_pd(all);
    const __m128d high = _mm_cvtepi32_pd(_mm_unpackhi_epi64(all, all));
    const __m128i lowProducts = _mm_cvttpd_epi32(_mm_mul_pd(low, reinterpret_cast<__m128d>(factors.low)));
    const __m128i highProducts = _mm_cvttpd_epi32(_mm_mul_pd(high, reinterpret_cast<__m128d>(factors.high)));
    return reinterpret_cast<I32>(_mm_unpacklo_epi64(lowProducts, highProducts));
#else
    I32 products{};
    for (int k = 0; k < kLanes<std::int32_t>; ++k) {
        const double product = numbers[k] * (k < kLanes<double> ? factors.low[k] : factors.high[k - kLanes<double>]);
        products[k] = product < 0x1p31 && product > -0x1p31 ? static_cast<std::int32_t>(product) : INT32_MIN;
    }
    return products;
#endif
}

/// Stores 2 * kLanes<std::int32_t> numbers as bytes, saturated to 0..255.
inline void StoreSaturatedU8(std::uint8_t* address, const SplitColumns<I32>& numbers) {
#if defined(CLARIBOX_VECTOR_AVX512)
    const __m512i words = _mm512_packs_epi32(reinterpret_cast<__m512i>(numbers.even), //
                                             reinterpret_cast<__m512i>(numbers.odd));
    const __m512i positive = _mm512_max_epi16(words, _mm512_setzero_si512());
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(address), _mm512_cvtusepi16_epi8(positive));
#elif defined(CLARIBOX_VECTOR_AVX2)
    const __m256i words = _mm256_packs_epi32(reinterpret_cast<__m256i>(numbers.even), //
                                             reinterpret_cast<__m256i>(numbers.odd));
    const __m256i bytes = _mm256_permute4x64_epi64(_mm256_packus_epi16(words, words), 0x08);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(address), _mm256_castsi256_si128(bytes));
#elif defined(CLARIBOX_VECTOR_SSE2)
    const __m128i words = _mm_packs_epi32(reinterpret_cast<__m128i>(numbers.even), //
                                          reinterpret_cast<__m128i>(numbers.odd));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(address), _mm_packus_epi16(words, words));
#else
    for (int k = 0; k < 2 * kLanes<std::int32_t>; ++k) {
        const int number = k < 4 ? numbers.even[k] : numbers.odd[k - 4];
        address[k] = static_cast<std::uint8_t>(number < 0 ? 0 : number > 255 ? 255 : number);
    }
#endif
}

/// The upper 16 bits of each product.
inline U16 MultiplyHigh(U16 a, U16 b) {
#if defined(CLARIBOX_VECTOR_AVX512)
    return reinterpret_cast<U16>(_mm512_mulhi_epu16(reinterpret_cast<__m512i>(a), reinterpret_cast<__m512i>(b)));
#elif defined(CLARIBOX_VECTOR_AVX2)
    return reinterpret_cast<U16>(_mm256_mulhi_epu16(reinterpret_cast<__m256i>(a), reinterpret_cast<__m256i>(b)));
#elif defined(CLARIBOX_VECTOR_SSE2)
    return reinterpret_cast<U16>(_mm_mulhi_epu16(reinterpret_cast<__m128i>(a), reinterpret_cast<__m128i>(b)));
#else
    const U32 low = (reinterpret_cast<U32>(a) & 0xFFFFu) * (reinterpret_cast<U32>(b) & 0xFFFFu) >> 16;
    const U32 high = (reinterpret_cast<U32>(a) >> 16) * (reinterpret_cast<U32>(b) >> 16) & 0xFFFF0000u;
    return reinterpret_cast<U16>(low | high);
#endif
}

/// Each double rounded to float and widened again.
inline F64 RoundToFloat(F64 wide) {
#if defined(CLARIBOX_VECTOR_AVX512)
    return _mm512_maskz_cvtps_pd(0xFF, _mm512_maskz_cvtpd_ps(0xFF, wide));
#elif defined(CLARIBOX_VECTOR_AVX2)
    return _mm256_cvtps_pd(_mm256_cvtpd_ps(wide));
#elif defined(CLARIBOX_VECTOR_SSE2)
    return _mm_cvtps_pd(_mm_cvtpd_ps(wide));
#else
    for (int k = 0; k < kLanes<double>; ++k) {
        volatile float rounded = static_cast<float>(wide[k]); // a store, which rounds in x87 code too
        wide[k] = static_cast<double>(rounded);
    }
    return wide;
#endif
}

} // namespace simd::CLARIBOX_VECTOR_CLASS
