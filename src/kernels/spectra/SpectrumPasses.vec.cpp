#include "kernels/spectra/SpectrumPasses.h"

#include "simd/Transpose.h"

namespace kernels::CLARIBOX_VECTOR_CLASS {
namespace {

using namespace simd::CLARIBOX_VECTOR_CLASS;

constexpr int kStep = kLanes<float>; // complex elements at a time: two vectors of floats

// A float, widened: the literal itself is another number.
constexpr double kFloor = static_cast<double>(0.01f);

struct Parts {
    F32 re;
    F32 im;
};

Parts LoadParts(const ChComplex* address) {
    Parts x;
    LoadSeparated(address, x.re, x.im);
    return x;
}

void StoreParts(ChComplex* address, Parts x) {
    StoreJoined(address, x.re, x.im);
}

F64Pair Widen(F32 x) {
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

// Rounds each lane to float.
F32 Narrow(F64Pair wide) {
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

struct WideParts {
    F64 re;
    F64 im;
};

// Applies `work`, WideParts to WideParts, to each half of the lanes of all `inputs`.
template <typename Work, typename... Inputs>
Parts InDouble(Work work, Inputs... inputs) {
    const auto low = [](F32 x) { return Widen(x).low; };
    const auto high = [](F32 x) { return Widen(x).high; };
    const WideParts first = work(WideParts{low(inputs.re), low(inputs.im)}...);
    const WideParts second = work(WideParts{high(inputs.re), high(inputs.im)}...);
    return {Narrow({first.re, second.re}), Narrow({first.im, second.im})};
}

Parts MultiplyStep(Parts otf, Parts spectrum, float scale) {
    const Parts product = InDouble(
        [](WideParts h, WideParts x) {
            const F64 t = h.im * (x.re - x.im);
            return WideParts{x.re * (h.re - h.im) + t, x.im * (h.re + h.im) + t};
        },
        otf, spectrum);
    return {product.re * scale, product.im * scale};
}

Parts InvertStep(Parts otf, double noise) {
    return InDouble(
        [noise](WideParts h) {
            const F64 power = (h.re * h.re + noise) + h.im * h.im;
            // Adds, and so jumps at the threshold: required (SpectrumTest.InverseOfOneElement).
            const I64 isLow = reinterpret_cast<I64>(power < kFloor);
            const F64 den = power + reinterpret_cast<F64>(isLow & reinterpret_cast<I64>(F64{} + kFloor));
            return WideParts{h.re / den, h.im / -den};
        },
        otf);
}

// step(inputs ...) returns the new parts of kStep elements, which go to the first of `data`; there are `count` in each.
// The last ones go through copies, so that they get the same instructions.
template <typename Step, typename... Inputs>
void ForEachStep(std::size_t count, Step step, ChComplex* data, Inputs... inputs) {
    std::size_t k = 0;
    for (; k + kStep <= count; k += kStep) {
        StoreParts(data + k, step(LoadParts(data + k), LoadParts(inputs + k)...));
    }
    if (k < count) {
        const std::size_t bytes = (count - k) * sizeof(ChComplex);
        const auto loadLast = [k, bytes](const ChComplex* from) {
            ChComplex last[kStep] = {};
            __builtin_memcpy(last, from + k, bytes);
            return LoadParts(last);
        };
        ChComplex last[kStep];
        StoreParts(last, step(loadLast(data), loadLast(inputs)...));
        __builtin_memcpy(data + k, last, bytes);
    }
}

void MultiplyAndScale(const ChComplex* otf, ChComplex* spectrum, std::size_t count, float scale) {
    ForEachStep(
        count, [scale](Parts x, Parts h) { return MultiplyStep(h, x, scale); }, spectrum, otf);
}

void Invert(ChComplex* otf, std::size_t count, float noise) {
    ForEachStep(
        count, [wide = static_cast<double>(noise)](Parts h) { return InvertStep(h, wide); }, otf);
}

} // namespace

const SpectrumPasses kSpectrumPasses = {MultiplyAndScale, Invert};

} // namespace kernels::CLARIBOX_VECTOR_CLASS
