// The life of a job: repeated and failed commits, memory that runs out, and the jobs that are one call of a routine.
#include "common/GuardedBuffer.h"
#include "dft/TestJob.h"
#include "dft/TestSurroundings.h"
#include "simd/VectorClass.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {

using dft::DftDescriptor;
using JobLife = Descriptor;

TEST_F(JobLife, OneShotByVariant) {
    struct Row {
        const char* job;
        int precision, domain, format, transforms, inputStride, outputStride;
        int below[3]; ///< by variant: lengths up to here, exclusively; 0: none, -1: all; the fourth is as the third
    };
    const Row rows[] = {
        {"c", 35, 32, 54, 1, 1, 1, {1024, 1024, 4096}},     {"z", 36, 32, 54, 1, 1, 1, {512, 512, 1024}},
        {"two c", 35, 32, 54, 2, 1, 1, {0, 0, 0}},          {"c from stride 2", 35, 32, 54, 1, 2, 1, {0, 0, 0}},
        {"c to stride 2", 35, 32, 54, 1, 1, 2, {0, 0, 0}},  {"s", 35, 33, 54, 1, 1, 1, {8193, 8193, 8193}},
        {"d", 36, 33, 54, 1, 1, 1, {4097, 4097, 4097}},     {"three s", 35, 33, 54, 3, 1, 1, {8193, 8193, 8193}},
        {"s tight", 35, 33, 55, 1, 1, 1, {-1, -1, -1}},     {"two d native", 36, 33, 56, 2, 1, 1, {-1, -1, -1}},
        {"s from stride 2", 35, 33, 55, 1, 2, 1, {0, 0, 0}}};
    TestNumber variant(dft::dft_variant_code, 0);
    for (int code = 0; code < dft::kVariants; ++code) {
        dft::dft_variant_code = code;
        for (const Row& row : rows) {
            for (const int length : {2, 511, 512, 1023, 1024, 4095, 4096, 4097, 8192, 8193}) {
                const Job job(row.precision, row.domain, {length});
                job->packed_format = row.format;
                job->number_of_transforms = row.transforms;
                job->input_stride = row.inputStride;
                job->output_stride = row.outputStride;
                ASSERT_EQ(dft::dfti_commit_descriptor(job.handle), 0);
                const int below = row.below[std::min(code, 2)];
                EXPECT_EQ(job->one_shot, below < 0 || length < below ? row.transforms : 0)
                    << row.job << ", variant " << code << ", length " << length;
            }
        }
    }
    const Job plane(35, 32, {4, 4});
    ASSERT_EQ(dft::dfti_commit_descriptor(plane.handle), 0);
    EXPECT_EQ(plane->one_shot, 0);
}

struct JobRow {
    const char* name;
    int precision, domain, placement;
    Lengths lengths;
    int inputStride = 0, outputStride = 0; ///< of the fastest dimension; 0: as created
    int transforms = 1;

    /// Not committed.
    std::int32_t Make(DftDescriptor** handle) const {
        const std::int32_t status = Create(handle, precision, domain, lengths);
        if (status == 0) {
            (*handle)->placement = placement;
            (*handle)->input_stride = inputStride > 0 ? inputStride : 1;
            (*handle)->output_stride = outputStride > 0 ? outputStride : 1;
            (*handle)->number_of_transforms = transforms;
            // Apart, a packed spectrum of a real line included.
            (*handle)->input_distance = (*handle)->output_distance =
                (lengths.back() + 2) * std::max((*handle)->input_stride, (*handle)->output_stride);
        }
        return status;
    }
};

// Every method of a plan, complex and real; lines, planes and volumes; everything that asks for memory when it runs.
const JobRow kJobs[] = {
    {"tiny", 36, 32, 44, {3}},
    {"direct", 35, 32, 43, {13}},
    {"mixed radix", 36, 32, 43, {1078}},
    {"general power of two", 35, 32, 44, {64}},
    {"long general power of two", 35, 32, 44, {65536}},
    {"strided line", 35, 32, 44, {200}, 3, 2},
    {"lines by Bluestein", 35, 32, 43, {302}, 1, 1, 9},
    {"general plane", 35, 32, 43, {10, 14}},
    {"general plane out of place", 36, 32, 44, {9, 151}},
    {"large plane", 35, 32, 43, {64, 49}},
    {"power of two", 35, 32, 43, {8192}},
    {"short power of two", 35, 32, 43, {4096}},
    {"strided power of two", 35, 32, 43, {8192}, 3, 2},
    {"power-of-two plane", 36, 32, 43, {64, 32}},
    {"rank 3", 35, 32, 43, {6, 8, 157}},
    {"rank 3, double", 36, 32, 44, {4, 150, 7}},
    {"real, tiny", 35, 33, 43, {3}},
    {"real, direct", 36, 33, 43, {179}},
    {"real by Bluestein", 35, 33, 43, {181}},
    {"real by Bluestein, even", 35, 33, 43, {302}},
    {"real, mixed radix", 36, 33, 44, {1001}},
    {"real, mixed radix, even", 35, 33, 44, {360}},
    {"real power of two", 36, 33, 44, {64}},
    {"real lines", 36, 33, 43, {60}, 2, 2, 3},
};

/// Arrays for any of kJobs, filled with the same numbers each time; taken as double precision, they are small ones.
struct Arrays {
    std::vector<float> input = std::vector<float>(140000);
    std::vector<float> output = input;

    Arrays() {
        for (std::size_t i = 0; i < input.size(); ++i) {
            input[i] = static_cast<float>(i * 37 % 101) - 50.25f;
        }
    }
};

TEST_F(JobLife, CommitMayBeRepeated) {
    for (const JobRow& row : kJobs) {
        SCOPED_TRACE(row.name);
        Arrays once, again;
        DftDescriptor* handle = nullptr;
        ASSERT_EQ(row.Make(&handle), 0);
        int live = 0;
        for (Arrays* const arrays : {&once, &again}) {
            // The other placement in between leaves nothing behind.
            for (const int placement : {87 - row.placement, row.placement}) {
                handle->placement = placement;
                ASSERT_EQ(dft::dfti_commit_descriptor(handle), 0);
            }
            EXPECT_EQ(dft::dfti_compute_forward(handle, arrays->input.data(), arrays->output.data()), 0);
            if (arrays == &once) {
                live = m_Allocator.Live();
            }
        }
        EXPECT_TRUE(SameBytes(once.input.data(), again.input.data(), once.input.size()));
        EXPECT_TRUE(SameBytes(once.output.data(), again.output.data(), once.output.size()));
        EXPECT_EQ(m_Allocator.Live(), live);
        EXPECT_EQ(dft::dfti_free_descriptor(&handle), 0);
    }
}

// Steps of a life, cut where a status is not 0.
std::int32_t Live(const JobRow& row, DftDescriptor** handle) {
    Arrays arrays;
    std::int32_t status = row.Make(handle);
    if (status == 0) {
        status = dft::dfti_commit_descriptor(*handle);
    }
    for (const auto compute : {dft::dfti_compute_forward, dft::dfti_compute_backward}) {
        if (status == 0) {
            status = compute(*handle, arrays.input.data(), arrays.output.data());
        }
    }
    return status;
}

// Without cached blocks, each request of each thread comes to the allocator; cells of refused blocks stay in use until
// all are released.
TEST_F(JobLife, EveryRefusedAllocationIsStatus1AndLeaksNothing) {
    struct Surroundings {
        int threads;
        bool disabled;
        simd::VectorClass vectors; ///< the portable one takes lines one by one
    };
    const simd::VectorClass usual = simd::ActiveVectorClass();
    const Surroundings surroundings[] = {
        {1, true, usual}, {3, true, usual}, {1, true, simd::VectorClass::Portable}, {1, false, usual}};
    for (const auto& [threads, disabled, vectors] : surroundings) {
        simd::ForceVectorClass(vectors);
        const TestNumber uncached(dft::fast_mm_disabled, disabled);
        const EngineThreads engine(threads);
        for (const JobRow& row : kJobs) {
            int refused = 0;
            for (std::int32_t status = 1; status != 0; ++refused) {
                SCOPED_TRACE(::testing::Message() << row.name << ", threads " << threads << ", uncached " << disabled
                                                  << ", request " << refused << " refused");
                dft::engine_free_buffers();
                ASSERT_EQ(m_Allocator.Live(), 0);
                DftDescriptor* handle = nullptr;
                m_Allocator.Refuse(refused);
                status = Live(row, &handle);
                ASSERT_EQ(status, m_Allocator.Requests() > refused ? 1 : 0);
                m_Allocator.Refuse(-1);
                EXPECT_EQ(handle == nullptr, refused == 0);
                EXPECT_EQ(dft::dfti_free_descriptor(&handle), refused == 0 ? 3 : 0);
                if (!disabled) { // the thread's next job has the other cells
                    EXPECT_EQ(Live(row, &handle), 0);
                    EXPECT_EQ(dft::dfti_free_descriptor(&handle), 0);
                }
            }
            EXPECT_GT(refused, 2) << row.name;
        }
    }
    simd::ForceVectorClass(usual);
}

TEST_F(JobLife, AFailedCommitCutsTheChainBehindTheRecord) {
    const Job job(35, 32, {7, 11, 13});
    ASSERT_EQ(dft::dfti_commit_descriptor(job.handle), 0);
    job->next->length = 0; // no plan has it
    EXPECT_EQ(dft::dfti_commit_descriptor(job.handle), 7);
    EXPECT_EQ(job->next, job.handle + 1);
    EXPECT_EQ(job->next->next, nullptr);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(job.handle[i].plan_complex_single, nullptr);
    }
    EXPECT_EQ(job->next->commit_state, dft::DFT_COMMITTED);
}

} // namespace
