#include "claribox/KernelTable.h"

#include <gtest/gtest.h>

#include <cstring>
#include <utility>

TEST(AlignedMemoryTest, BlocksAreAlignedWritableAndRemembered) {
    using Row = std::pair<std::size_t, std::uint32_t>; // the last two ask for huge pages
    for (const auto& [size, alignment] :
         {Row{0, 8}, Row{1, 9}, Row{100, 64}, Row{100, 63}, Row{3, 1000}, Row{7, 4096}, Row{65536, 100},
          Row{100, 12345}, Row{(4u << 20) + 1, 64}, Row{9u << 20, 1 << 20}}) {
        SCOPED_TRACE(testing::Message() << size << " bytes at " << alignment);
        auto* const block = static_cast<unsigned char*>(ChAlignedAlloc(size, static_cast<int>(alignment)));
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignment, 0u);
        std::uint32_t offset;
        std::memcpy(&offset, block - 4, 4);
        EXPECT_GT(offset, alignment);
        EXPECT_LE(offset, 2 * alignment);
        std::memset(block, 0xEE, size);
        ChAlignedFree(block); // a wrong offset aborts here
    }
}

TEST(AlignedMemoryTest, AlignmentsBelowEightGiveNull) {
    for (const int alignment : {7, 4, 1, 0, -64}) {
        EXPECT_EQ(ChAlignedAlloc(100, alignment), nullptr) << alignment;
    }
}
