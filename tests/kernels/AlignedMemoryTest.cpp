#include "claribox/KernelTable.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

struct AllocationRow {
    std::size_t size;
    int alignment;
};

constexpr AllocationRow AllocationRows[] = {
    {0, 8},
    {1, 9},
    {100, 64},
    {100, 63},
    {3, 1000},
    {7, 4096},
    {65536, 100},
    {100, 12345},
    {(4u << 20) + 1, 64},
    {9u << 20, 1 << 20}, // the last two ask for huge pages
};

} // namespace

TEST(AlignedMemoryTest, BlocksAreAlignedWritableAndRemembered) {
    for (const AllocationRow& row : AllocationRows) {
        SCOPED_TRACE(testing::Message() << row.size << " bytes at " << row.alignment);
        auto* const block = static_cast<unsigned char*>(ChAlignedAlloc(row.size, row.alignment));
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % static_cast<unsigned>(row.alignment), 0u);
        std::uint32_t offset;
        std::memcpy(&offset, block - 4, 4);
        EXPECT_GT(offset, static_cast<std::uint32_t>(row.alignment));
        EXPECT_LE(offset, 2 * static_cast<std::uint32_t>(row.alignment));
        std::memset(block, 0xEE, row.size);
        ChAlignedFree(block); // a wrong offset aborts here
    }
}

TEST(AlignedMemoryTest, AlignmentsBelowEightGiveNull) {
    for (const int alignment : {7, 4, 1, 0, -64}) {
        EXPECT_EQ(ChAlignedAlloc(100, alignment), nullptr) << alignment;
    }
}
