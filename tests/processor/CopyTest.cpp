#include "common/GuardedBuffer.h"
#include "processor/MembersTest.h"

#include <vector>

namespace {

/// Byte counts around every size at which the streaming copy changes its ways, and remainders of all kinds.
std::vector<std::uint32_t> Sizes() {
    std::vector<std::uint32_t> sizes;
    for (std::uint32_t size = 0; size <= 67; ++size) {
        sizes.push_back(size);
    }
    constexpr std::uint32_t line = 64;
    // The edges: where the destination stays as it lies, 1024 and 3152 lines, and whole blocks after them.
    for (const std::uint32_t edge : {2 * line, 10 * line, 32768u, 65536u, 1023 * line, 3151 * line, 3152 * line,
                                     (3152 + 48) * line, (3152 + 48 + 127) * line}) {
        // 7 bytes are the most that go ahead to align the destination: from edge + 7 on all its lines remain.
        for (const std::uint32_t more : {0u, 1u, 6u, 7u, 8u, 63u, 70u}) {
            sizes.insert(sizes.end(), {edge - 1 - more, edge + more});
        }
    }
    return sizes;
}

class CopyTest : public ProcessorClassTest {};

TEST_P(CopyTest, EqualsMemcpyAtEverySize) {
    constexpr std::size_t largest = (3152 + 48 + 127) * 64 + 70;
    for (const std::size_t sourceAt : {0u, 3u}) {
        GuardedBuffer<std::uint8_t> source(largest, sourceAt);
        FillRandom(source, 17);
        for (const std::uint32_t size : Sizes()) {
            for (const std::size_t destinationAt : {0u, 1u, 4u, 7u, 8u}) {
                GuardedBuffer<std::uint8_t> destination(size, destinationAt);
                // The end of the source's block, behind which nothing may be read.
                const std::uint8_t* const from = source.data() + (largest - size);
                ASSERT_EQ(m_Members.Copy(destination.data(), from, size), destination.data());
                ASSERT_TRUE(MMXStateIsClear());
                ASSERT_TRUE(SameBytes(from, destination.data(), size))
                    << size << " bytes at " << sourceAt << ", " << destinationAt;
                ASSERT_TRUE(destination.GuardsIntact()) << size << " bytes at " << destinationAt;
            }
        }
    }
    EXPECT_EQ(m_Members.Copy(nullptr, nullptr, 0), nullptr);
}

CLARIBOX_INSTANTIATE_FOR_PROCESSOR_CLASSES(CopyTest);

} // namespace
