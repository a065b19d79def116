// Plain loops: the compiler vectorises them.
#include "SampleRows.h"

#include "simd/Vector.h"

namespace denoise::CLARIBOX_VECTOR_CLASS {
namespace {

void Load(const std::uint8_t* __restrict pixels, float* __restrict samples, std::ptrdiff_t count) {
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

struct Soft {
    static float Shrink(float x, float a, float t) {
        const float sign = x > 0.0f ? 1.0f : x < 0.0f ? -1.0f : 0.0f;
        return sign * (a - t);
    }
};
struct Hard {
    static float Shrink(float x, float, float) { return x; }
};
struct Garrote {
    static float Shrink(float x, float a, float t) {
        const double wide = static_cast<double>(a);
        const double threshold = static_cast<double>(t);
        return static_cast<float>(static_cast<double>(x) * (1.0 - threshold * threshold / (wide * wide)));
    }
};

template <typename Rule>
void Shrink(float* samples, float threshold, std::ptrdiff_t count) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const float x = samples[i];
        const float magnitude = __builtin_fabsf(x);
        const float shrunk = Rule::Shrink(x, magnitude, threshold);
        samples[i] = magnitude < threshold ? 0.0f : shrunk;
    }
}

} // namespace

const SampleRows kSampleRows = {Load, Restore, {Shrink<Soft>, Shrink<Hard>, Shrink<Garrote>}};

} // namespace denoise::CLARIBOX_VECTOR_CLASS
