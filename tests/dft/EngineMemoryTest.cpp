// Cached blocks of threads, memory of plans, and whether the engine may use threads.
#include "dft/memory/engine_memory.h"

#include "dft/TestSurroundings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <unistd.h>
#include <vector>

namespace {

using dft::engine_alloc;
using dft::engine_block_table;
using dft::engine_free;
using dft::EngineBlockSlot;
using dft::kBlocksPerThread;
using dft::kThreadSlots;

class EngineMemory : public ::testing::Test {
protected:
    TestNumber m_Enabled{dft::fast_mm_disabled, 0};
    TestAllocator m_Allocator;
    EngineBlockSlot& m_Slot = engine_block_table[0]; // the first to be claimed
};

struct FitRow {
    std::vector<std::size_t> cached; // in cells 0, 1, ...
    std::size_t busy;                // the first so many stay in use
    std::size_t request;
    int cell;    // where the block comes from; -1: from nowhere
    bool reused; // it is the cached one
};

TEST_F(EngineMemory, TheSmallestSurplusIsTakenAndTheSmallestBlockReplaced) {
    std::vector<std::size_t> full(kBlocksPerThread, 64);
    full[5] = full[9] = 32;
    std::vector<FitRow> rows = {
        {{100}, 0, 90, 0, true},           {{100}, 0, 100, 0, true},
        {{100}, 0, 101, 1, false},         {{100}, 1, 90, 1, false},
        {{200, 100, 150}, 0, 90, 1, true}, {{200, 100, 150}, 0, 120, 2, true},
        {{200, 100, 150}, 2, 90, 2, true}, {{100, 100}, 0, 50, 0, true},
        {{100, 100}, 1, 50, 1, true},      {full, 0, 48, 0, true},
        {full, 0, 80, 5, false},           {full, 6, 80, 9, false},
        {full, 31, 80, 31, false},         {full, 32, 1, -1, false},
    };
    if constexpr (sizeof(std::size_t) > 4) {
        constexpr auto kBeyond = static_cast<std::size_t>(std::uint64_t{1} << 32);
        rows.push_back({{kBeyond + 10}, 0, 10, 0, true});
        rows.push_back({{kBeyond + 10}, 0, kBeyond + 10, 1, false});
    }
    for (const FitRow& row : rows) {
        SCOPED_TRACE(::testing::Message() << "cached " << ::testing::PrintToString(row.cached) << ", busy " << row.busy
                                          << ", request " << row.request);
        dft::engine_free_buffers();
        std::vector<void*> blocks;
        for (const std::size_t size : row.cached) {
            blocks.push_back(engine_alloc(size));
        }
        std::for_each(blocks.begin() + static_cast<std::ptrdiff_t>(row.busy), blocks.end(), engine_free);
        m_Allocator.Refuse(-1);
        void* const block = engine_alloc(row.request);
        if (row.cell < 0) {
            EXPECT_EQ(block, nullptr);
            continue;
        }
        EXPECT_EQ(block, m_Slot.block[row.cell]);
        EXPECT_EQ(m_Slot.block_in_use[row.cell], 1);
        EXPECT_EQ(m_Allocator.Requests(), row.reused ? 0 : 1);
        EXPECT_GE(m_Slot.block_size[row.cell], std::min<std::size_t>(row.request, UINT32_MAX));
        // A replaced block went back, and nothing else did.
        const std::size_t cells = std::max<std::size_t>(row.cached.size(), static_cast<std::size_t>(row.cell) + 1);
        EXPECT_EQ(m_Allocator.Live(), static_cast<int>(cells));
    }
    dft::engine_free_buffers();
    EXPECT_EQ(m_Allocator.Live(), 0);
}

TEST_F(EngineMemory, ASlotGivenUpKeepsItsBlocksForTheNextOwner) {
    void* const first = engine_alloc(100);
    void* const second = engine_alloc(300);
    EXPECT_EQ(m_Slot.owner_thread, static_cast<std::uint32_t>(gettid()));
    engine_free(first);
    EXPECT_EQ(m_Slot.owner_thread, static_cast<std::uint32_t>(gettid()));
    engine_free(second);
    EXPECT_EQ(m_Slot.owner_thread, 0u);
    OnThreads(1, [&](int) {
        EXPECT_EQ(engine_alloc(200), second);
        EXPECT_EQ(m_Slot.owner_thread, static_cast<std::uint32_t>(gettid()));
        engine_free(second);
    });
    EXPECT_EQ(m_Allocator.Requests(), 2);
}

TEST_F(EngineMemory, OnlyTheThreadThatTookABlockGivesItBack) {
    void* const block = engine_alloc(100);
    const EngineBlockSlot* const others = engine_block_table + 1;
    OnThreads(1, [&](int) { engine_free(block); }); // has no slot, and gets none
    EXPECT_EQ(m_Slot.block_in_use[0], 1);
    EXPECT_EQ(others->owner_thread, 0u);
    OnThreads(1, [&](int) {
        void* const own = engine_alloc(100);
        EXPECT_NE(own, block);
        engine_free(block);
        EXPECT_EQ(others->block_in_use[0], 1);
        engine_free(own);
    });
    EXPECT_EQ(m_Slot.block_in_use[0], 1);
    int stranger = 0;
    engine_free(&stranger);
    engine_free(nullptr);
    EXPECT_EQ(m_Slot.block_in_use[0], 1);
    EXPECT_EQ(m_Allocator.Live(), 2);
    engine_free(block);
    EXPECT_EQ(m_Slot.owner_thread, 0u);
}

TEST_F(EngineMemory, The65thThreadGetsNullAndTheLockIsFree) {
    for (EngineBlockSlot& slot : engine_block_table) {
        slot.owner_thread = UINT32_MAX; // no thread's id
    }
    EXPECT_EQ(engine_alloc(8), nullptr);
    EXPECT_EQ(dft::engine_table_lock, 0u);
    engine_block_table[kThreadSlots - 1].owner_thread = 0;
    void* const block = engine_alloc(8);
    EXPECT_EQ(block, engine_block_table[kThreadSlots - 1].block[0]);
    EXPECT_NE(block, nullptr);
    engine_free(block);
    dft::engine_free_buffers();
    EXPECT_EQ(m_Slot.owner_thread, 0u);
}

// The sanitizer sees a slot pass from thread to thread; every build sees a block that two threads hold.
TEST_F(EngineMemory, ThreadsThatTakeAndGiveBackShareNoBlock) {
    std::atomic<int> overwritten{0};
    OnThreads(4, [&overwritten](int thread) {
        const auto mark = static_cast<unsigned char>(thread);
        for (std::size_t round = 0; round < 2000; ++round) {
            const std::size_t bytes = 16 + round % 7 * 16;
            auto* const block = static_cast<unsigned char*>(engine_alloc(bytes));
            std::memset(block, mark, bytes);
            overwritten += std::any_of(block, block + bytes, [mark](unsigned char byte) { return byte != mark; });
            engine_free(block);
        }
    });
    EXPECT_EQ(overwritten, 0);
}

TEST_F(EngineMemory, FailedAllocationKeepsItsCell) {
    m_Allocator.Refuse(0);
    EXPECT_EQ(engine_alloc(500), nullptr);
    EXPECT_EQ(m_Slot.block[0], nullptr);
    EXPECT_EQ(m_Slot.block_size[0], 500u);
    EXPECT_EQ(m_Slot.block_in_use[0], 1);
    engine_free(nullptr);
    void* const block = engine_alloc(400);
    EXPECT_EQ(m_Slot.block[1], block);
    engine_free(block);
    // The one way back, after which nothing is released twice.
    dft::engine_free_buffers();
    dft::engine_free_buffers();
    EXPECT_TRUE(m_Slot.block[0] == nullptr && m_Slot.block[1] == nullptr);
    EXPECT_EQ(m_Slot.block_size[0] + m_Slot.block_size[1], 0u);
    EXPECT_EQ(m_Slot.block_in_use[0] + m_Slot.block_in_use[1], 0);
    EXPECT_EQ(m_Slot.owner_thread, 0u);
    EXPECT_EQ(m_Allocator.Live(), 0);
}

struct DisableRow {
    const char* value;
    int disabled;
};

TEST_F(EngineMemory, FastManagerIsDisabledByAVariable) {
    for (const DisableRow& row : {DisableRow{nullptr, 0}, {"", 0}, {"1", 1}, {"0", 1}, {"no and much longer", 1}}) {
        SCOPED_TRACE(row.value == nullptr ? "not set" : row.value);
        const TestVariable variable("CLARIBOX_DISABLE_FAST_MM", row.value);
        dft::engine_free_buffers();
        dft::fast_mm_disabled = -1;
        void* const block = engine_alloc(100);
        EXPECT_EQ(dft::fast_mm_disabled, row.disabled);
        EXPECT_EQ(m_Slot.block[0], row.disabled != 0 ? nullptr : block);
        engine_free(block);
        EXPECT_EQ(m_Allocator.Live(), row.disabled != 0 ? 0 : 1);
        dft::fast_mm_disabled = 0;
    }
    void* const block = engine_alloc(100);
    engine_free(block);
    dft::fast_mm_disabled = 1;
    dft::engine_free_buffers();
    EXPECT_EQ(m_Slot.block[0], block);
    dft::fast_mm_disabled = 0;
}

struct SwitchRow {
    const char* threads;
    const char* serial;
    int result;
};

TEST(EngineThreads, SerialSwitch) {
    const SwitchRow rows[] = {{nullptr, nullptr, 1}, {nullptr, "YES", 1}, {nullptr, "yes", 1}, {nullptr, "Yes", 0},
                              {nullptr, "NO", 0},    {nullptr, "", 0},    {"2", nullptr, 0},   {"1", nullptr, 0},
                              {"2", "YES", 1},       {"2", "yes", 1},     {"2", "yes ", 0},    {"2", "NO", 0}};
    const TestNumber unread(dft::serial_switch, -1);
    TestVariable threads("OMP_NUM_THREADS", nullptr);
    TestVariable serial("CLARIBOX_SERIAL", nullptr);
    for (const SwitchRow& row : rows) {
        SCOPED_TRACE(::testing::Message() << "OMP_NUM_THREADS " << ::testing::PrintToString(row.threads)
                                          << ", CLARIBOX_SERIAL " << ::testing::PrintToString(row.serial));
        threads.Set(row.threads);
        serial.Set(row.serial);
        dft::serial_switch = -1;
        EXPECT_EQ(dft::engine_serial_switch(), row.result);
        serial.Set(row.result == 1 ? "NO" : "YES");
        EXPECT_EQ(dft::engine_serial_switch(), row.result) << "read again";
    }
}

TEST_F(EngineMemory, PlanMemoryIsAlignedAndKnowsItsHeapBlock) {
    for (const std::ptrdiff_t bytes : {1, 7, 8, 31, 32, 33, 1000}) {
        auto* const block = static_cast<unsigned char*>(dft::plan_alloc(bytes));
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 32, 0u) << bytes;
        std::memset(block, 0xA5, static_cast<std::size_t>(bytes));
        dft::plan_free(block);
        EXPECT_EQ(m_Allocator.Live(), 0) << bytes;
    }
    for (const std::ptrdiff_t bytes : {0, -1}) {
        m_Allocator.Refuse(-1);
        EXPECT_EQ(dft::plan_alloc(bytes), nullptr);
        EXPECT_EQ(m_Allocator.Requests(), 0);
    }
    m_Allocator.Refuse(0);
    EXPECT_EQ(dft::plan_alloc(64), nullptr);
    dft::plan_free(nullptr);
    EXPECT_EQ(m_Allocator.Live(), 0);
}

} // namespace
