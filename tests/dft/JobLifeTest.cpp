// The life of a job: repeated and failed commits, memory that runs out, and the jobs that are one call of a routine.
#include "dft/DescriptorFixture.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

using dft::DftDescriptor;
using JobLife = Descriptor;

struct OneShotRow {
    const char* job;
    int precision, domain, format, transforms, inputStride, outputStride;
    int below[4]; // by variant: lengths up to here, exclusively; 0: none, -1: all
    int value;
};

TEST_F(JobLife, OneShotByVariant) {
    const OneShotRow rows[] = {
        {"c", 35, 32, 54, 1, 1, 1, {1024, 1024, 4096, 4096}, 1},
        {"z", 36, 32, 54, 1, 1, 1, {512, 512, 1024, 1024}, 1},
        {"two c", 35, 32, 54, 2, 1, 1, {0, 0, 0, 0}, 1},
        {"c from stride 2", 35, 32, 54, 1, 2, 1, {0, 0, 0, 0}, 1},
        {"c to stride 2", 35, 32, 54, 1, 1, 2, {0, 0, 0, 0}, 1},
        {"s", 35, 33, 54, 1, 1, 1, {8193, 8193, 8193, 8193}, 1},
        {"d", 36, 33, 54, 1, 1, 1, {4097, 4097, 4097, 4097}, 1},
        {"three s", 35, 33, 54, 3, 1, 1, {8193, 8193, 8193, 8193}, 3},
        {"s tight", 35, 33, 55, 1, 1, 1, {-1, -1, -1, -1}, 1},
        {"two d native", 36, 33, 56, 2, 1, 1, {-1, -1, -1, -1}, 2},
        {"s from stride 2", 35, 33, 55, 1, 2, 1, {0, 0, 0, 0}, 1},
    };
    TestNumber variant(dft::dft_variant_code, 0);
    for (int code = 0; code < dft::kVariants; ++code) {
        dft::dft_variant_code = code;
        for (const OneShotRow& row : rows) {
            for (const int length : {2, 511, 512, 1023, 1024, 4095, 4096, 4097, 8192, 8193}) {
                const Job job(row.precision, row.domain, {length});
                job->packed_format = row.format;
                job->number_of_transforms = row.transforms;
                job->input_stride = row.inputStride;
                job->output_stride = row.outputStride;
                ASSERT_EQ(dft::dfti_commit_descriptor(job.handle), 0);
                const int below = row.below[code];
                EXPECT_EQ(job->one_shot, below < 0 || length < below ? row.value : 0)
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
};

const JobRow kJobs[] = {
    {"general plane", 35, 32, 43, {10, 14}},
    {"general plane out of place", 36, 32, 44, {9, 151}},
    {"power of two", 35, 32, 43, {8192}},
    {"power-of-two plane", 36, 32, 43, {64, 32}},
    {"real", 35, 33, 43, {302}},
    {"real power of two", 36, 33, 44, {64}},
    {"rank 3", 35, 32, 43, {6, 8, 157}},
    {"rank 3, double", 36, 32, 43, {4, 150, 7}},
};

/// Arrays for any of kJobs, filled with the same numbers each time.
struct Arrays {
    std::vector<double> input = std::vector<double>(20000);
    std::vector<double> output = std::vector<double>(20000);

    explicit Arrays(int precision) {
        for (std::size_t i = 0; i < input.size(); ++i) {
            const double value = static_cast<double>(i * 37 % 101) - 50;
            const float pair[2] = {static_cast<float>(value), static_cast<float>(value / 3)};
            precision == 36 ? std::memcpy(&input[i], &value, sizeof(value))
                            : std::memcpy(&input[i], pair, sizeof(pair));
        }
    }
    bool operator==(const Arrays& other) const {
        const std::size_t bytes = input.size() * sizeof(double);
        return std::memcmp(input.data(), other.input.data(), bytes) == 0 &&
               std::memcmp(output.data(), other.output.data(), bytes) == 0;
    }
};

TEST_F(JobLife, CommitMayBeRepeated) {
    for (const JobRow& row : kJobs) {
        SCOPED_TRACE(row.name);
        Arrays once(row.precision), again(row.precision);
        const Job job(row.precision, row.domain, row.lengths);
        int live = 0;
        for (Arrays* const arrays : {&once, &again}) {
            // The other placement in between leaves nothing behind.
            for (const int placement : {87 - row.placement, row.placement}) {
                job->placement = placement;
                ASSERT_EQ(dft::dfti_commit_descriptor(job.handle), 0);
            }
            EXPECT_EQ(dft::dfti_compute_forward(job.handle, arrays->input.data(), arrays->output.data()), 0);
            if (arrays == &once) {
                live = m_Allocator.Live();
            }
        }
        EXPECT_TRUE(once == again);
        EXPECT_EQ(m_Allocator.Live(), live);
    }
}

// Steps of a life, cut where a status is not 0.
std::int32_t Live(const JobRow& row, DftDescriptor** handle) {
    Arrays arrays(row.precision);
    std::int32_t status = Create(handle, row.precision, row.domain, row.lengths);
    if (status == 0) {
        (*handle)->placement = row.placement;
        status = dft::dfti_commit_descriptor(*handle);
    }
    if (status == 0) {
        status = dft::dfti_compute_forward(*handle, arrays.input.data(), arrays.output.data());
    }
    return status;
}

TEST_F(JobLife, EveryRefusedAllocationIsStatus1AndLeaksNothing) {
    for (const JobRow& row : kJobs) {
        int refused = 0;
        for (std::int32_t status = 1; status != 0; ++refused) {
            SCOPED_TRACE(::testing::Message() << row.name << ", request " << refused << " refused");
            dft::engine_free_buffers();
            ASSERT_EQ(m_Allocator.Live(), 0);
            DftDescriptor* handle = nullptr;
            m_Allocator.Refuse(refused);
            status = Live(row, &handle);
            m_Allocator.Refuse(-1);
            ASSERT_EQ(status, status == 0 ? 0 : 1);
            EXPECT_EQ(handle == nullptr, refused == 0);
            EXPECT_EQ(dft::dfti_free_descriptor(&handle), refused == 0 ? 3 : 0);
        }
        EXPECT_GT(refused, 2) << row.name;
    }
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

// A job of one line, moved by its offsets: nothing but the line is touched.
TEST_F(JobLife, OneShotJobsHonourOffsetsAndScale) {
    for (const int length : {8, 6}) {
        for (const int placement : {43, 44}) {
            SCOPED_TRACE(::testing::Message() << "length " << length << ", placement " << placement);
            const Job job(35, 32, {length});
            job->placement = placement;
            job->input_offset = 3;
            job->output_offset = 5;
            job->forward_scale_single = 0.5f;
            ASSERT_EQ(dft::dfti_commit_descriptor(job.handle), 0);
            EXPECT_EQ(job->one_shot, 1);
            // A line of ones: its sum at the first element, zeros behind.
            std::vector<dft::Complex<float>> input(20, {1, 0}), output(20, {1, 0});
            ASSERT_EQ(dft::dfti_compute_forward(job.handle, input.data(), output.data()), 0);
            const auto& result = placement == 43 ? input : output;
            const auto& other = placement == 43 ? output : input;
            const int start = placement == 43 ? 3 : 5;
            for (int i = 0; i < 20; ++i) {
                const float inLine = i == start ? 0.5f * static_cast<float>(length) : 0.0f;
                const bool outside = i < start || i >= start + length;
                EXPECT_NEAR(result[static_cast<std::size_t>(i)].re, outside ? 1.0f : inLine, 1e-6f) << i;
                EXPECT_EQ(other[static_cast<std::size_t>(i)].re, 1.0f) << i;
            }
        }
    }
}

TEST_F(JobLife, RealJobsOfSeveralTransformsComputeAllOfThem) {
    const Job job(35, 33, {6});
    job->number_of_transforms = 3;
    job->packed_format = dft::DFT_PACK_NATIVE;
    job->input_distance = job->output_distance = 6;
    ASSERT_EQ(dft::dfti_commit_descriptor(job.handle), 0);
    std::vector<float> data(18, 1.0f);
    ASSERT_EQ(dft::dfti_compute_forward(job.handle, data.data()), 0);
    for (std::size_t i = 0; i < data.size(); ++i) {
        EXPECT_NEAR(data[i], i % 6 == 0 ? 6.0f : 0.0f, 1e-6f) << i;
    }
}

} // namespace
