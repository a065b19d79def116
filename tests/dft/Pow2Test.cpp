// The power-of-two path by itself: its tables, its passes, and its form for threads. What it computes is the matter of
// TransformTest.cpp, ChecksumTest.cpp and DriverTest.cpp.
#include "dft/pow2/pow2.h"

#include "common/GuardedBuffer.h"
#include "common/VectorClassTest.h"
#include "dft/TestJob.h"
#include "dft/TestSurroundings.h"
#include "dft/pow2/schedule.h"
#include "reference/dft_slow.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

namespace {

/// What a variant prescribes for lines of 2^bits elements in one precision; the fourth is as the third.
struct VariantRow {
    int variant;
    bool isSingle;
    std::uintptr_t alignment; ///< of tables, in bytes
    int wholeBelow;           ///< bits of lines that are one block
    int twoLevelsUpTo;        ///< bits of lines that fall into blocks of 2^10
    int groupBits, blockBits; ///< of longer ones
};
const VariantRow kVariants[] = {{0, true, 16, 11, 14, 14, 10}, {1, true, 32, 11, 15, 15, 9},
                                {2, true, 64, 13, 14, 14, 9},  {3, true, 64, 13, 14, 14, 9},
                                {0, false, 16, 11, 13, 13, 9}, {1, false, 32, 11, 13, 13, 9},
                                {2, false, 64, 11, 13, 13, 9}, {3, false, 64, 11, 13, 13, 9}};

int BlockBits(const VariantRow& row, int bits) {
    return bits < row.wholeBelow ? bits : bits <= row.twoLevelsUpTo ? 10 : row.blockBits;
}

/// check(number, row, bits) for every variant, precision and length, the variant being in force.
template <typename Check>
void ForAllVariants(int mostBits, Check check) {
    for (const VariantRow& row : kVariants) {
        const TestNumber code(dft::dft_variant_code, row.variant);
        for (int bits = 0; bits <= mostBits; ++bits) {
            SCOPED_TRACE(::testing::Message() << "variant " << row.variant << ", 2^" << bits);
            if (row.isSingle) {
                check(1.0f, row, bits);
            } else {
                check(1.0, row, bits);
            }
        }
    }
}

// Wherever the block begins, the table does at the next multiple of the variant's alignment, and keeps within the
// block.
TEST(Pow2, CommitTable) {
    ForAllVariants(16, [](auto number, const VariantRow& row, int bits) {
        using Real = decltype(number);
        GuardedBuffer<unsigned char> block(((row.isSingle ? 3 : 6) * (std::size_t{1} << bits) / 2 + 64) * 8);
        std::fill_n(block.data(), block.size(), static_cast<unsigned char>(0xA5));
        (row.isSingle ? dft::c1d_table_build : dft::z1d_table_build)(bits, block.data());
        EXPECT_TRUE(block.GuardsIntact());
        Real header[2];
        std::memcpy(header, block.bytes(), sizeof header);
        EXPECT_EQ(header[0], 1 << bits);
        EXPECT_EQ(header[1], 0);
        const std::size_t start = row.alignment - reinterpret_cast<std::uintptr_t>(block.bytes()) % row.alignment;
        for (std::size_t k = sizeof header; k < start; ++k) {
            EXPECT_EQ(block.Read(k), 0xA5) << "byte " << k;
        }
        Real first = 0;
        std::memcpy(&first, block.bytes() + start, sizeof first);
        EXPECT_TRUE(bits < 15 || first == 1) << "no root at " << start;
    });
}

// Groups are a matter of caches alone and show in no result; of blocks an odd power of two and the even one below it
// give the same bytes.
TEST(Pow2, LengthsFallIntoGroupsAndBlocks) {
    ForAllVariants(17, [](auto number, const VariantRow& row, int bits) {
        const TestJob<decltype(number)> job({1 << bits});
        const auto form = dft::ScheduleOf<decltype(number)>(*job.handle, dft::kForward);
        EXPECT_EQ(form.blockBits, BlockBits(row, bits));
        EXPECT_EQ(form.groupBits, bits <= row.twoLevelsUpTo ? BlockBits(row, bits) : row.groupBits);
    });
}

class Pow2Test : public VectorClassTest {};

// Threads give the bytes of one where each has whole blocks, else those of other passes.
TEST_P(Pow2Test, ThreadsEqualOneThread) {
    const EngineThreads serial(1);
    ForAllVariants(17, [](auto number, const VariantRow& row, int bits) {
        using Real = decltype(number);
        if (row.variant == 3 || (row.variant > 0 && !row.isSingle)) {
            return; // the limits of another row
        }
        const TestJob<Real> job({1 << bits});
        SetScales<Real>(*job.handle, 0.1, 0.1);
        const auto x = dft_slow::RandomLine<dft::Complex<Real>>(std::size_t{1} << bits, 1);
        for (const int sign : kSigns) {
            const auto forward = row.isSingle ? job->c1d_forw_dft : job->z1d_forw_dft;
            const auto backward = row.isSingle ? job->c1d_back_dft : job->z1d_back_dft;
            for (const std::int32_t ordering : kOrderings) {
                job->ordering = ordering;
                const auto expected = job.Run(sign, x);
                for (const std::int32_t threads : {2, 3, bits <= 9 ? 1000 : 8}) { // 9 bits make 32 pieces at the most
                    auto threaded = x;
                    EXPECT_EQ((sign < 0 ? forward : backward)(threaded.data(), threads, job.handle), dft::DFT_OK);
                    if (threads <= 1 << (bits - BlockBits(row, bits))) {
                        EXPECT_TRUE(AreSame(expected, threaded)) << threads << " threads";
                    } else { // other roundings
                        EXPECT_LE(dft_slow::RelativeError(threaded, dft_slow::ToWideLine(expected)),
                                  std::numeric_limits<Real>::epsilon() * 2)
                            << threads << " threads";
                    }
                }
            }
        }
    });
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(Pow2Test);

} // namespace
