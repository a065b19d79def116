#include "BlockStatistics.h"

#include "simd/Vector.h"

namespace focus::CLARIBOX_VECTOR_CLASS {
namespace {

using namespace simd::CLARIBOX_VECTOR_CLASS;

constexpr int kStep = kLanes<std::uint16_t>;
constexpr int kStepBlocks = kStep / kBlockSide;
constexpr int kPartial = kLanes<std::int32_t> / kStepBlocks; // sums of a block that a vector leaves to add up

std::uint32_t SumOfBlock(I32 sums, int block) {
    std::int32_t sum = 0;
    for (int k = 0; k < kPartial; ++k) {
        sum += sums[block * kPartial + k];
    }
    return static_cast<std::uint32_t>(sum);
}

// The blocks that a vector covers, of which the first `count` are wanted.
void SumStep(const std::uint8_t* samples, std::ptrdiff_t stride, BlockSums* blocks, int count) {
    U16 columns{};
    I32 squares{};
    for (int y = 0; y < kBlockSide; ++y) {
        const U16 row = LoadWidenedU8(samples + y * stride);
        columns += row;
        squares += MultiplyAddPairs(reinterpret_cast<I16>(row), reinterpret_cast<I16>(row));
    }
    const I32 sums = MultiplyAddPairs(reinterpret_cast<I16>(columns), I16{} + std::int16_t{1});
    for (int k = 0; k < count; ++k) {
        blocks[k] = {SumOfBlock(sums, k), SumOfBlock(squares, k)};
    }
}

void SumRow(const std::uint8_t* samples, std::ptrdiff_t stride, BlockSums* blocks, int count) {
    int k = 0;
    for (; k <= count - kStepBlocks; k += kStepBlocks) {
        SumStep(samples + k * kBlockSide, stride, blocks + k, kStepBlocks);
    }
    if (k < count) {
        std::uint8_t last[kBlockSide * kStep] = {};
        for (int y = 0; y < kBlockSide; ++y) {
            __builtin_memcpy(last + y * kStep, samples + y * stride + k * kBlockSide,
                             static_cast<std::size_t>((count - k) * kBlockSide));
        }
        SumStep(last, kStep, blocks + k, count - k);
    }
}

} // namespace

const BlockStatistics kBlockStatistics = {SumRow};

} // namespace focus::CLARIBOX_VECTOR_CLASS
