// The budget of the folded form: a folded sample is at most 4 * 255 = 1020 and a coefficient 16 bits with sign, so
// that a pair of products stays below 2^27 and never saturates; sums of pairs wrap at 32 bits, as the filter requires.
#include "ConvolutionRows.h"

#include "simd/Vector.h"

namespace focus::CLARIBOX_VECTOR_CLASS {
namespace {

using namespace simd::CLARIBOX_VECTOR_CLASS;

constexpr int kBlock = 4; // vectors of sums that one pass keeps in registers

void FoldRows(const MirroredRows& rows, std::int16_t* __restrict pairs, std::uint16_t* __restrict columnSums,
              int count) {
    const std::uint8_t* const above0 = rows.above[0];
    const std::uint8_t* const above1 = rows.above[1];
    const std::uint8_t* const below0 = rows.below[0];
    const std::uint8_t* const below1 = rows.below[1];
    for (int x = 0; x < count; ++x) {
        const int first = above0[x] + below0[x];
        const int second = above1[x] + below1[x];
        pairs[2 * x] = static_cast<std::int16_t>(first);
        pairs[2 * x + 1] = static_cast<std::int16_t>(second);
        columnSums[x] = static_cast<std::uint16_t>(columnSums[x] + first + second);
    }
}

void BoxSums(const std::uint16_t* columnSums, int width, std::uint16_t* box, int count) {
    for (int x = 0; x < count; x += kLanes<std::uint16_t>) {
        U16 sum = {};
        for (int j = 0; j < width; ++j) {
            sum += Load<U16>(columnSums + x + j);
        }
        Store(box + x, sum);
    }
}

void SumFolded(const FoldedSums& folded, std::int32_t* sums, int count) {
    for (int x = 0; x < count; x += kBlock * kLanes<std::int32_t>) {
        U32 sum[kBlock] = {};
        for (int k = 0; k < kBlock && folded.box != nullptr; ++k) {
            sum[k] = LoadWidenedU16(folded.box + x + k * kLanes<std::int32_t>) << 16;
        }
        const std::int16_t* coefficients = folded.coefficients;
        for (int p = 0; p < folded.pairCount; ++p) {
            const std::int16_t* middle = folded.pairs + p * folded.pairStride + 2 * (folded.half + x);
            for (int j = 0; j <= folded.half; ++j, coefficients += 2) {
                std::int32_t both;
                __builtin_memcpy(&both, coefficients, sizeof both);
                const I16 weights = reinterpret_cast<I16>(I32{} + both);
                for (int k = 0; k < kBlock; ++k) {
                    const std::int16_t* at = middle + k * kLanes<std::int16_t>;
                    I16 samples = Load<I16>(at + 2 * j);
                    if (j > 0) {
                        samples += Load<I16>(at - 2 * j);
                    }
                    sum[k] += reinterpret_cast<U32>(MultiplyAddPairs(samples, weights));
                }
            }
        }
        for (int k = 0; k < kBlock; ++k) {
            Store(sums + x + k * kLanes<std::int32_t>, sum[k]);
        }
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

void Divide(std::int32_t* __restrict values, const double* __restrict reciprocals, int count) {
    for (int x = 0; x < count; ++x) {
        const double quotient = static_cast<double>(values[x]) * reciprocals[x];
        values[x] = static_cast<std::int32_t>(quotient < 2147483647.0 ? quotient : 2147483647.0);
    }
}

} // namespace

const ConvolutionRows kConvolutionRows = {FoldRows, BoxSums, SumFolded, SumTaps, Divide};

} // namespace focus::CLARIBOX_VECTOR_CLASS
