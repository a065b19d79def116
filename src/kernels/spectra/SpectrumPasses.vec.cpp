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
