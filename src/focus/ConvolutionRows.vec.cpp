// The budget of the folded form: a folded sample is at most 4 * 255 = 1020 and a coefficient 16 bits with sign, so
// that a pair of products stays below 2^27 and never saturates; sums of pairs wrap at 32 bits, as the filter requires.
//
// Samples are widened to 16 bits, interleaved in pairs, summed and packed to bytes again: each step stays within 16
// bytes of a vector, and the last undoes the order of the second.
#include "ConvolutionRows.h"

#include "simd/Vector.h"

namespace focus::CLARIBOX_VECTOR_CLASS {
namespace {

using namespace simd::CLARIBOX_VECTOR_CLASS;

constexpr int kLane32 = kLanes<std::uint32_t>;
constexpr int kStep = 2 * kLane32; // columns whose samples fill a vector once widened
// What one pass keeps in registers: vectors of sums in each of two rows, and steps of sums of taps.
constexpr int kBlock = kVectorBytes == 64 ? 4 : 2; // AVX-512 has twice the registers
constexpr int kTapBlock = 2;

// 65536 times the sum of both 16-bit halves.
U32 HighSum(U16 pair) {
    const U32 both = reinterpret_cast<U32>(pair);
    return (both << 16) + (both & 0xFFFF0000u);
}

U16 LoadPair(const std::uint8_t* at, int distance) {
    return LoadWidenedU8(at - distance) + LoadWidenedU8(at + distance);
}

template <bool hasBox>
void FoldRowWith(const MirroredKernel kernel, const std::uint8_t* samples, const std::uint32_t* before,
                 std::uint32_t* folded, int count) {
    for (int x = 0; x < count; x += kStep) {
        SplitColumns<U16> box = {}; // sums of even and odd distances apart, modulo 2^16
        std::uint32_t* plane = folded + x;
        U16 even = LoadWidenedU8(samples + x);
        for (int j = 1;; j += 2, plane += kernel.samples) {
            const U16 odd = j <= kernel.halfCols ? LoadPair(samples + x, j * kernel.step) : U16{};
            const SplitColumns<U32> pairs = Interleave(even, odd);
            Store(plane, pairs.even);
            Store(plane + kLane32, pairs.odd);
            if (hasBox) {
                box.even += reinterpret_cast<U16>(pairs.even);
                box.odd += reinterpret_cast<U16>(pairs.odd);
            }
            if (j >= kernel.halfCols) {
                break;
            }
            even = LoadPair(samples + x, (j + 1) * kernel.step);
        }
        if (hasBox) {
            const std::ptrdiff_t at = kernel.pairCount * kernel.samples + x;
            Store(folded + at, Load<U32>(before + at) + HighSum(box.even));
            Store(folded + at + kLane32, Load<U32>(before + at + kLane32) + HighSum(box.odd));
        }
    }
}

void FoldRow(const MirroredKernel& kernel, const std::uint8_t* samples, const std::uint32_t* before,
             std::uint32_t* folded, int count) {
    (kernel.hasBox ? FoldRowWith<true> : FoldRowWith<false>)(kernel, samples, before, folded, count);
}

// Of the rows that the kernel covers at the upper and at the lower pixel, each is read once: what lies at distance i
// below the upper one and above the lower one was read at the step before.
void SumFoldedBlock(const MirroredKernel& kernel, const std::uint32_t* const* rows, int x, std::int32_t* upperSums,
                    std::int32_t* lowerSums) {
    const auto load = [](const std::uint32_t* at, int k) { return Load<I16>(at + k * kLane32); };
    I32 upper[kBlock] = {};
    I32 lower[kBlock] = {};
    if (kernel.hasBox) {
        const std::ptrdiff_t at = kernel.pairCount * kernel.samples + x;
        const auto box = [&](int endRow, int k) {
            return Load<U32>(rows[endRow] + at + k * kLane32) -
                   Load<U32>(rows[endRow - 2 * kernel.halfRows - 1] + at + k * kLane32);
        };
        Unrolled<kBlock>([&](int k) {
            upper[k] = reinterpret_cast<I32>(box(2 * kernel.halfRows + 1, k));
            lower[k] = reinterpret_cast<I32>(box(2 * kernel.halfRows + 2, k));
        });
    }
    const std::uint32_t* const* const middle = rows + kernel.halfRows + 1;
    const std::uint32_t* coefficients = kernel.coefficients;
    for (int p = 0; p < kernel.pairCount; ++p) {
        const std::ptrdiff_t at = p * kernel.samples + x;
        I16 above[kBlock];
        I16 below[kBlock];
        const I16 middleWeights = reinterpret_cast<I16>(U32{} + *coefficients++);
        Unrolled<kBlock>([&](int k) {
            above[k] = load(middle[0] + at, k);
            below[k] = load(middle[1] + at, k);
            upper[k] = AddProductPairs(upper[k], above[k], middleWeights);
            lower[k] = AddProductPairs(lower[k], below[k], middleWeights);
        });
        for (int i = 1; i <= kernel.halfRows; ++i) {
            const I16 weights = reinterpret_cast<I16>(U32{} + *coefficients++);
            Unrolled<kBlock>([&](int k) {
                const I16 nextAbove = load(middle[-i] + at, k);
                const I16 nextBelow = load(middle[1 + i] + at, k);
                upper[k] = AddProductPairs(upper[k], nextAbove + below[k], weights);
                lower[k] = AddProductPairs(lower[k], above[k] + nextBelow, weights);
                above[k] = nextAbove;
                below[k] = nextBelow;
            });
        }
    }
    Unrolled<kBlock>([&](int k) {
        Store(upperSums + k * kLane32, upper[k]);
        Store(lowerSums + k * kLane32, lower[k]);
    });
}

void SumFolded(const MirroredKernel& kernel, const std::uint32_t* const* rows, std::int32_t* upperSums,
               std::int32_t* lowerSums, int count) {
    for (int x = 0; x < count; x += kBlock * kLane32) {
        SumFoldedBlock(kernel, rows, x, upperSums + x, lowerSums + x);
    }
}

void SumTaps(const std::uint8_t* samples, const TapPair* pairs, int pairCount, std::int32_t* sums, int count) {
    for (int x = 0; x < count; x += kTapBlock * kStep) {
        SplitColumns<I32> low[kTapBlock] = {};
        U16 high[kTapBlock] = {}; // modulo 2^16, since all above falls off
        for (int t = 0; t < pairCount; ++t) {
            const TapPair& pair = pairs[t];
            const I16 weights = reinterpret_cast<I16>(U32{} + pair.low);
            for (int k = 0; k < kTapBlock; ++k) {
                const U16 first = LoadWidenedU8(samples + x + k * kStep + pair.offset[0]);
                const U16 second = LoadWidenedU8(samples + x + k * kStep + pair.offset[1]);
                const SplitColumns<U32> both = Interleave(first, second);
                low[k].even = AddProductPairs(low[k].even, reinterpret_cast<I16>(both.even), weights);
                low[k].odd = AddProductPairs(low[k].odd, reinterpret_cast<I16>(both.odd), weights);
                high[k] += first * pair.high[0] + second * pair.high[1];
            }
        }
        for (int k = 0; k < kTapBlock; ++k) {
            const SplitColumns<U32> highs = Interleave(U16{}, high[k]);
            std::int32_t* const at = sums + x + k * kStep;
            Store(at, reinterpret_cast<U32>(low[k].even) + highs.even);
            Store(at + kLane32, reinterpret_cast<U32>(low[k].odd) + highs.odd);
        }
    }
}

// `factorsAt(x)` are the reciprocals of the columns of a step.
template <typename FactorsAt>
void PackQuotientsWith(const std::int32_t* sums, std::uint8_t* samples, int count, FactorsAt factorsAt) {
    const auto packAt = [&](int x, std::uint8_t* target) {
        const SplitColumns<F64Pair> factors = factorsAt(x);
        StoreSaturatedU8(target, {TruncatedProducts(Load<I32>(sums + x), factors.even),
                                  TruncatedProducts(Load<I32>(sums + x + kLane32), factors.odd)});
    };
    int x = 0;
    for (; x <= count - kStep; x += kStep) {
        packAt(x, samples + x);
    }
    if (x < count) {
        std::uint8_t last[kStep];
        packAt(x, last);
        __builtin_memcpy(samples + x, last, static_cast<std::size_t>(count - x));
    }
}

void PackQuotients(const std::int32_t* sums, const double* reciprocals, std::uint8_t* samples, int count) {
    PackQuotientsWith(sums, samples, count, [reciprocals](int x) { return LoadSplit(reciprocals + x); });
}

void PackQuotientsByOne(const std::int32_t* sums, double reciprocal, std::uint8_t* samples, int count) {
    const F64 all = F64{} + reciprocal;
    PackQuotientsWith(sums, samples, count, [all](int) { return SplitColumns<F64Pair>{{all, all}, {all, all}}; });
}

} // namespace

const ConvolutionRows kConvolutionRows = {FoldRow, SumFolded, SumTaps, PackQuotients, PackQuotientsByOne};

} // namespace focus::CLARIBOX_VECTOR_CLASS
