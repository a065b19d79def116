// The budget of the folded form: a folded sample is at most 4 * 255 = 1020 and a coefficient 16 bits with sign, so
// that a pair of products stays below 2^27 and never saturates; sums of pairs wrap at 32 bits, as the filter requires.
#include "ConvolutionRows.h"

#include "simd/Vector.h"

namespace focus::CLARIBOX_VECTOR_CLASS {
namespace {

using namespace simd::CLARIBOX_VECTOR_CLASS;

constexpr int kStep = kLanes<std::uint32_t>;
constexpr int kBlock = 4; // vectors of sums that one pass keeps in registers

template <bool hasBox>
void FoldRowWith(const MirroredKernel& kernel, const std::uint8_t* samples, std::uint32_t* folded, int count) {
    const auto atDistance = [](const std::uint8_t* at, int j) { return LoadWidenedU8(at - j) + LoadWidenedU8(at + j); };
    for (int x = 0; x < count; x += kStep) {
        const std::uint8_t* const at = samples + x;
        std::uint32_t* plane = folded + x;
        U16 box = {}; // sums of even and odd distances apart, modulo 2^16
        for (int p = 0; p < kernel.pairCount; ++p, plane += kernel.columns) {
            U32 pair = p == 0 ? LoadWidenedU8(at) : atDistance(at, 2 * p);
            if (2 * p < kernel.halfCols) {
                pair |= atDistance(at, 2 * p + 1) << 16;
            }
            Store(plane, pair);
            if (hasBox) {
                box += reinterpret_cast<U16>(pair);
            }
        }
        if (hasBox) {
            const U32 both = reinterpret_cast<U32>(box);
            Store(plane, Load<U32>(plane - kernel.rowStride) + (both << 16) + (both & 0xFFFF0000u));
        }
    }
}

void FoldRow(const MirroredKernel& kernel, const std::uint8_t* samples, std::uint32_t* folded, int count) {
    (kernel.hasBox ? FoldRowWith<true> : FoldRowWith<false>)(kernel, samples, folded, count);
}

void SumFoldedBlock(const MirroredKernel& kernel, const std::uint32_t* middle, std::int32_t* sums) {
    I32 sum[kBlock] = {};
    if (kernel.hasBox) {
        const std::uint32_t* const box = middle + kernel.pairCount * kernel.columns;
        const std::uint32_t* const last = box + kernel.halfRows * kernel.rowStride;
        const std::uint32_t* const before = box - (kernel.halfRows + 1) * kernel.rowStride;
        for (int k = 0; k < kBlock; ++k) {
            sum[k] = reinterpret_cast<I32>(Load<U32>(last + k * kStep) - Load<U32>(before + k * kStep));
        }
    }
    const std::uint32_t* coefficients = kernel.coefficients;
    for (int p = 0; p < kernel.pairCount; ++p) {
        const I16 weights = reinterpret_cast<I16>(U32{} + *coefficients++);
        for (int k = 0; k < kBlock; ++k) {
            const I16 samples = Load<I16>(middle + p * kernel.columns + k * kStep);
            sum[k] = AddProductPairs(sum[k], samples, weights);
        }
    }
    for (int i = 1; i <= kernel.halfRows; ++i) {
        const std::uint32_t* above = middle - i * kernel.rowStride;
        const std::uint32_t* below = middle + i * kernel.rowStride;
        for (int p = 0; p < kernel.pairCount; ++p, above += kernel.columns, below += kernel.columns) {
            const I16 weights = reinterpret_cast<I16>(U32{} + *coefficients++);
            for (int k = 0; k < kBlock; ++k) {
                const I16 samples = Load<I16>(above + k * kStep) + Load<I16>(below + k * kStep);
                sum[k] = AddProductPairs(sum[k], samples, weights);
            }
        }
    }
    for (int k = 0; k < kBlock; ++k) {
        Store(sums + k * kStep, sum[k]);
    }
}

void SumFolded(const MirroredKernel& kernel, const std::uint32_t* middle, std::int32_t* sums, int count) {
    for (int x = 0; x < count; x += kBlock * kStep) {
        SumFoldedBlock(kernel, middle + x, sums + x);
    }
}

void SumTaps(const std::uint8_t* samples, const Tap* taps, int tapCount, std::int32_t* sums, int count) {
    for (int x = 0; x < count; x += kBlock * kStep) {
        U32 sum[kBlock] = {};
        for (int t = 0; t < tapCount; ++t) {
            const std::uint8_t* at = samples + x + taps[t].offset;
            for (int k = 0; k < kBlock; ++k) {
                sum[k] += LoadWidenedU8(at + k * kStep) * taps[t].coefficient;
            }
        }
        for (int k = 0; k < kBlock; ++k) {
            Store(sums + x + k * kStep, sum[k]);
        }
    }
}

// `factorsAt(x)` are the reciprocals of one vector of sums.
template <typename FactorsAt>
void PackQuotientsWith(const std::int32_t* sums, std::uint8_t* samples, int count, FactorsAt factorsAt) {
    int x = 0;
    for (; x <= count - kStep; x += kStep) {
        StoreProductsAsU8(samples + x, Load<I32>(sums + x), factorsAt(x));
    }
    if (x < count) {
        std::uint8_t last[kStep];
        StoreProductsAsU8(last, Load<I32>(sums + x), factorsAt(x));
        __builtin_memcpy(samples + x, last, static_cast<std::size_t>(count - x));
    }
}

void PackQuotients(const std::int32_t* sums, const double* reciprocals, std::uint8_t* samples, int count) {
    PackQuotientsWith(sums, samples, count, [reciprocals](int x) {
        return F64Pair{Load<F64>(reciprocals + x), Load<F64>(reciprocals + x + kStep / 2)};
    });
}

void PackQuotientsByOne(const std::int32_t* sums, double reciprocal, std::uint8_t* samples, int count) {
    const F64 all = F64{} + reciprocal;
    PackQuotientsWith(sums, samples, count, [all](int) { return F64Pair{all, all}; });
}

} // namespace

const ConvolutionRows kConvolutionRows = {FoldRow, SumFolded, SumTaps, PackQuotients, PackQuotientsByOne};

} // namespace focus::CLARIBOX_VECTOR_CLASS
