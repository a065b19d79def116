// A job of any kind and the surroundings in which its life is tested.
#pragma once

#include "dft/TestSurroundings.h"
#include "dft/dft.h"

#include <gtest/gtest.h>

#include <vector>

using Lengths = std::vector<int>; ///< slowest dimension first

inline std::int32_t Create(dft::DftDescriptor** handle, int precision, int domain, const Lengths& lengths) {
    const int rank = static_cast<int>(lengths.size());
    return rank == 1 ? dft::dfti_create_descriptor(handle, precision, domain, rank, lengths[0])
                     : dft::dfti_create_descriptor(handle, precision, domain, rank, lengths.data());
}

/// A descriptor that is freed at the end.
struct Job {
    dft::DftDescriptor* handle = nullptr;

    Job(int precision, int domain, const Lengths& lengths) {
        EXPECT_EQ(Create(&handle, precision, domain, lengths), dft::DFT_OK);
    }
    ~Job() { EXPECT_EQ(dft::dfti_free_descriptor(&handle), dft::DFT_OK); }
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;
    dft::DftDescriptor* operator->() const { return handle; }
};

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
