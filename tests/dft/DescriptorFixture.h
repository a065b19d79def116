// The surroundings in which the life of a job is tested.
#pragma once

#include "dft/TestJob.h"
#include "dft/TestSurroundings.h"

/// Serial, with counted memory that must all have come back at the end.
class Descriptor : public ::testing::Test {
protected:
    ~Descriptor() override {
        dft::engine_free_buffers();
        EXPECT_EQ(m_Allocator.Live(), 0);
    }

    TestNumber m_Enabled{dft::fast_mm_disabled, 0};
    TestNumber m_Serial{dft::serial_switch, 1};
    TestAllocator m_Allocator;
};
