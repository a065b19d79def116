// Where a loop is plain the compiler vectorises it.
#include "SampleRows.h"

#include "simd/Vector.h"

namespace denoise::CLARIBOX_VECTOR_CLASS {
namespace {

using namespace simd::CLARIBOX_VECTOR_CLASS;

void LoadPixels(const std::uint8_t* __restrict pixels, float* __restrict samples, std::ptrdiff_t count) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        samples[i] = pixels[i];
    }
}

void Restore(float* __restrict samples, std::uint8_t* __restrict pixels, std::ptrdiff_t count) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const float positive = samples[i] > 0.0f ? samples[i] : 0.0f;
        samples[i] = positive > 255.0f ? 254.5f : positive;
    }
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const auto whole = static_cast<std::int32_t>(samples[i]);
        // Twice the fraction, exact as the sum of sample and one half would not be.
        const auto up = static_cast<std::int32_t>((samples[i] - static_cast<float>(whole)) * 2.0f);
        pixels[i] = static_cast<std::uint8_t>(whole + up);
    }
}

F32 Bits(I32 mask, F32 x) {
    return reinterpret_cast<F32>(mask & reinterpret_cast<I32>(x));
}

struct Soft {
    static F32 Shrink(F32 x, F32 a, F32 t) {
        const F32 one = F32{} + 1.0f;
        const F32 sign = Bits(x > 0.0f, one) - Bits(x < 0.0f, one);
        return sign * (a - t);
    }
};
struct Hard {
    static F32 Shrink(F32 x, F32, F32) { return x; }
};
struct Garrote {
    static F32 Shrink(F32 x, F32 a, F32 t) {
        const auto shrink = [](F64 wide, F64 magnitude, F64 threshold) {
            return wide * (1.0 - threshold * threshold / (magnitude * magnitude));
        };
        const F64Pair wide = Widen(x);
        const F64Pair magnitude = Widen(a);
        const F64Pair threshold = Widen(t);
        return Narrow(
            {shrink(wide.low, magnitude.low, threshold.low), shrink(wide.high, magnitude.high, threshold.high)});
    }
};

template <typename Rule>
void Shrink(float* samples, float threshold, std::ptrdiff_t count) {
    constexpr std::ptrdiff_t kStep = kLanes<float>;
    const F32 t = F32{} + threshold;
    const auto shrink = [t](float* address) {
        const F32 x = Load<F32>(address);
        const F32 magnitude = reinterpret_cast<F32>(reinterpret_cast<I32>(x) & INT32_MAX);
        Store(address, Bits(~(magnitude < t), Rule::Shrink(x, magnitude, t)));
    };
    std::ptrdiff_t i = 0;
    for (; i + kStep <= count; i += kStep) {
        shrink(samples + i);
    }
    if (i < count) { // through a copy, so that the last ones get the same instructions
        float last[kStep] = {};
        const std::size_t bytes = static_cast<std::size_t>(count - i) * sizeof(float);
        __builtin_memcpy(last, samples + i, bytes);
        shrink(last);
        __builtin_memcpy(samples + i, last, bytes);
    }
}

} // namespace

const SampleRows kSampleRows = {LoadPixels, Restore, {Shrink<Soft>, Shrink<Hard>, Shrink<Garrote>}};

} // namespace denoise::CLARIBOX_VECTOR_CLASS
