// The budget of the folded form: a folded sample is at most 4 * 255 = 1020 and a coefficient 16 bits with sign, so
// that a pair of products stays below 2^27 and never saturates; sums of pairs wrap at 32 bits, as the filter requires.
#include "ConvolutionRows.h"

#include "simd/Vector.h"

namespace focus::CLARIBOX_VECTOR_CLASS {
namespace {

using namespace simd::CLARIBOX_VECTOR_CLASS;

constexpr int kBlock = 4; // vectors of sums that one pass keeps in registers

void FoldRows(const MirroredRows& rows, std::uint32_t* pairs, int count) {
    for (int x = 0; x < count; x += kLanes<std::uint32_t>) {
        const U32 first = LoadWidenedU8(rows.above[0] + x) + LoadWidenedU8(rows.below[0] + x);
        const U32 second = LoadWidenedU8(rows.above[1] + x) + LoadWidenedU8(rows.below[1] + x);
        Store(pairs + x, first | second << 16);
    }
}

template <bool addBox>
void SumFoldedBlock(const FoldedSums& folded, const std::uint32_t* pairs, std::int32_t* sums) {
    I32 sum[kBlock] = {};
    I16 box[kBlock] = {}; // sums of all folded samples, of even and odd rows apart, modulo 2^16
    const std::uint32_t* coefficients = folded.coefficients;
    for (int p = 0; p < folded.pairCount; ++p, pairs += folded.pairStride) {
        const std::uint32_t* middle = pairs + folded.half;
        for (int j = 0; j <= folded.half; ++j) {
            const I16 weights = reinterpret_cast<I16>(U32{} + *coefficients++);
            for (int k = 0; k < kBlock; ++k) {
                const std::uint32_t* at = middle + k * kLanes<std::uint32_t>;
                I16 samples = Load<I16>(at + j);
                if (j > 0) {
                    samples += Load<I16>(at - j);
                }
                sum[k] = WrappingAdd(sum[k], MultiplyAddPairs(samples, weights));
                if (addBox) {
                    box[k] = WrappingAdd(box[k], samples);
                }
            }
        }
    }
    for (int k = 0; k < kBlock; ++k) {
        if (addBox) {
            const U32 both = reinterpret_cast<U32>(box[k]);
            sum[k] = WrappingAdd(sum[k], reinterpret_cast<I32>((both << 16) + (both & 0xFFFF0000u)));
        }
        Store(sums + k * kLanes<std::int32_t>, sum[k]);
    }
}

void SumFolded(const FoldedSums& folded, std::int32_t* sums, int count) {
    const auto sumBlock = folded.addBox ? SumFoldedBlock<true> : SumFoldedBlock<false>;
    for (int x = 0; x < count; x += kBlock * kLanes<std::int32_t>) {
        sumBlock(folded, folded.pairs + x, sums + x);
    }
}

void SumTaps(const Tap* taps, int tapCount, std::int32_t* sums, int count) {
    for (int x = 0; x < count; x += kBlock * kLanes<std::int32_t>) {
        U32 sum[kBlock] = {};
        for (int t = 0; t < tapCount; ++t) {
            const std::uint8_t* at = taps[t].samples + x;
            for (int k = 0; k < kBlock; ++k) {
                sum[k] += LoadWidenedU8(at + k * kLanes<std::uint32_t>) * taps[t].coefficient;
            }
        }
        for (int k = 0; k < kBlock; ++k) {
            Store(sums + x + k * kLanes<std::int32_t>, sum[k]);
        }
    }
}

void PackQuotients(const std::int32_t* __restrict sums, const double* __restrict reciprocals,
                   std::uint8_t* __restrict samples, int count) {
    for (int x = 0; x < count; ++x) {
        double quotient = static_cast<double>(sums[x]) * reciprocals[x];
        quotient = quotient > 0.0 ? quotient : 0.0;
        quotient = quotient < 255.0 ? quotient : 255.0;
        samples[x] = static_cast<std::uint8_t>(static_cast<std::int32_t>(quotient));
    }
}

} // namespace

const ConvolutionRows kConvolutionRows = {FoldRows, SumFolded, SumTaps, PackQuotients};

} // namespace focus::CLARIBOX_VECTOR_CLASS
