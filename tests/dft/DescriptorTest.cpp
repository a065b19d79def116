// The life of a job: statuses, fields after creation and commit, release, and what happens when memory runs out. What
// transforms compute is the matter of other tests.
#include "dft/dft.h"

#include "dft/TestSurroundings.h"
#include "dft/descriptor/general_slots.h"
#include "dft/plans/dft_plan.h"
#include "dft/pow2/pow2.h"
#include "dft/real/real_slots.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <functional>
#include <numeric>
#include <ostream>
#include <vector>

namespace {

using dft::DftDescriptor;
using Lengths = std::vector<int>;

std::int32_t Create(DftDescriptor** handle, int precision, int domain, const Lengths& lengths) {
    const int rank = static_cast<int>(lengths.size());
    return rank == 1 ? dft::dfti_create_descriptor(handle, precision, domain, rank, lengths[0])
                     : dft::dfti_create_descriptor(handle, precision, domain, rank, lengths.data());
}

/// A descriptor that is freed at the end.
struct Job {
    DftDescriptor* handle = nullptr;

    Job(int precision, int domain, const Lengths& lengths) {
        EXPECT_EQ(Create(&handle, precision, domain, lengths), dft::DFT_OK);
    }
    ~Job() { EXPECT_EQ(dft::dfti_free_descriptor(&handle), dft::DFT_OK); }
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;
    DftDescriptor* operator->() const { return handle; }
};

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

struct CreationRow {
    int precision, domain;
    Lengths lengths;
    int status;
};

std::ostream& operator<<(std::ostream& out, const CreationRow& row) {
    out << "precision " << row.precision << ", domain " << row.domain << ", lengths";
    for (const int length : row.lengths) {
        out << ' ' << length;
    }
    return out;
}

TEST_F(Descriptor, StatusesOfCreation) {
    const CreationRow rows[] = {
        {35, 32, {16}, 0},
        {36, 32, {5, 3}, 0},
        {36, 33, {9}, 0},
        {35, 32, {1, 1, 1, 1, 1, 1, 1}, 0},
        {35, 32, {}, 3},
        {35, 32, Lengths(8, 2), 3},
        {35, 32, Lengths(100, 2), 3},
        {35, 32, {0}, 3},
        {35, 32, {-4}, 3},
        {35, 32, {4, 0}, 3},
        {35, 32, {0, 4}, 3},
        {35, 32, {4, -1, 4}, 3},
        {35, 33, {4, 4}, 6},
        {35, 34, {4}, 6},
        {35, 34, {4, 4}, 6},
        {35, 99, {4}, 3},
        {35, 31, {4, 4}, 3},
        {34, 32, {4}, 3},
        {37, 33, {4}, 3},
        {99, 34, {4}, 6},
        {99, 33, {4, 4}, 6},
        {99, 34, {0}, 3},
    };
    for (const CreationRow& row : rows) {
        SCOPED_TRACE(row);
        m_Allocator.Refuse(-1);
        DftDescriptor* handle = nullptr;
        ASSERT_EQ(Create(&handle, row.precision, row.domain, row.lengths), row.status);
        EXPECT_EQ(handle != nullptr, row.status == 0);
        EXPECT_EQ(dft::engine_block_table[0].owner_thread != 0, row.status == 0) << "a block is still held";
        EXPECT_EQ(dft::dfti_free_descriptor(&handle), row.status == 0 ? 0 : 3);
    }
    EXPECT_EQ(dft::dfti_create_descriptor(nullptr, 35, 32, 1, 4), 3);
    DftDescriptor* handle = nullptr;
    EXPECT_EQ(dft::dfti_create_descriptor(&handle, 35, 32, 2, static_cast<const int*>(nullptr)), 3);
    dft::engine_free_buffers();
    m_Allocator.Refuse(-1);
    EXPECT_EQ(dft::dfti_create_descriptor(&handle, 35, 32, 1, 0), 3);
    EXPECT_EQ(m_Allocator.Requests(), 0);
    m_Allocator.Refuse(0);
    EXPECT_EQ(dft::dfti_create_descriptor(&handle, 35, 32, 1, 4), 1);
    EXPECT_EQ(handle, nullptr);
}

TEST_F(Descriptor, FieldsAfterCreation) {
    for (const Lengths& lengths : {Lengths{1}, {24}, {6, 8}, {5, 1, 7}, {2, 3, 4, 5, 6, 7, 8}}) {
        SCOPED_TRACE((CreationRow{36, 32, lengths, 0}));
        const Job job(36, 32, lengths);
        const DftDescriptor& head = *job.handle;
        EXPECT_EQ(
            (std::vector{head.cfg_a,           head.forward_domain, head.precision,       head.number_of_transforms,
                         head.cfg_b,           head.cfg_c,          head.cfg_d,           head.placement,
                         head.packed_format,   head.cfg_e,          head.cfg_f,           head.ordering,
                         head.cfg_g,           head.input_offset,   head.output_offset,   head.input_distance,
                         head.output_distance, head.commit_state,   head.workspace_bytes, head.one_shot}),
            (std::vector{37, 32, 36, 1, 39, 42, 40, 43, 54, 46, 51, 48, 53, 0, 0, 0, 0, 31, 0, 0}));
        int product = 1;
        const DftDescriptor* previous = nullptr;
        const DftDescriptor* record = job.handle;
        const int rank = static_cast<int>(lengths.size());
        for (int i = 0; i < rank; ++i, previous = record, record = record->next) {
            ASSERT_EQ(record, job.handle + i);
            const int length = lengths[static_cast<std::size_t>(rank - 1 - i)];
            EXPECT_EQ(std::memcmp(record->tag, "DFT", 3), 0);
            EXPECT_EQ(record->previous, previous);
            EXPECT_EQ(record->rank, rank);
            EXPECT_EQ(record->dimension_index, i);
            EXPECT_EQ(record->length, length);
            EXPECT_EQ(record->input_stride, product);
            EXPECT_EQ(record->output_stride, product);
            product *= length;
            EXPECT_EQ(record->running_product,
                      i > 0 ? product : std::accumulate(lengths.begin(), lengths.end(), 1, std::multiplies<>()));
            EXPECT_EQ(record->longest_length, *std::max_element(lengths.begin(), lengths.end()));
            EXPECT_LE(1 << record->log2_length, length);
            EXPECT_GT(2 << record->log2_length, length);
            EXPECT_EQ(record->general_length, length == 1 << record->log2_length ? 0 : 1);
            EXPECT_EQ(record->forward_scale_single + record->backward_scale_single, 2.0f);
            EXPECT_EQ(record->forward_scale_double + record->backward_scale_double, 2.0);
            EXPECT_TRUE(record->table_single == nullptr && record->table_double == nullptr &&
                        record->plan_complex_single == nullptr && record->plan_complex_double == nullptr &&
                        record->plan_real_single == nullptr && record->plan_real_double == nullptr);
            EXPECT_EQ(record->workspace_need + record->unsupported_flag, 0);
        }
        EXPECT_EQ(record, nullptr);
    }
}

TEST_F(Descriptor, StatusesOfCommitComputeAndFree) {
    float data[40] = {};
    EXPECT_EQ(dft::dfti_commit_descriptor(nullptr), 3);
    EXPECT_EQ(dft::dfti_free_descriptor(nullptr), 3);
    for (const int domain : {32, 33}) {
        for (const int precision : {35, 36}) {
            SCOPED_TRACE((CreationRow{precision, domain, {6}, 0}));
            Job job(precision, domain, {6});
            const auto forwardAndBackward = [&](void* input, void* output, int status) {
                EXPECT_EQ(dft::dfti_compute_forward(job.handle, input, output), status);
                EXPECT_EQ(dft::dfti_compute_backward(job.handle, input, output), status);
            };
            for (const int placement : {44, 43}) {
                job->placement = placement;
                job->commit_state = dft::DFT_UNCOMMITTED;
                forwardAndBackward(data, data + 20, 2);
                for (char& letter : job->tag) {
                    letter ^= 1;
                    forwardAndBackward(data, data + 20, 5);
                    forwardAndBackward(nullptr, data + 20, 3);
                    EXPECT_EQ(dft::dfti_commit_descriptor(job.handle), 5);
                    EXPECT_EQ(dft::dfti_free_descriptor(&job.handle), 5);
                    letter ^= 1;
                }
                EXPECT_EQ(dft::dfti_commit_descriptor(job.handle), 0);
                EXPECT_EQ(job->commit_state, dft::DFT_COMMITTED);
                forwardAndBackward(nullptr, data + 20, 3);
                forwardAndBackward(data, nullptr, placement == 43 ? 0 : 3);
                forwardAndBackward(data, data + 20, 0);
            }
            job->unsupported_flag = 1;
            EXPECT_EQ(dft::dfti_commit_descriptor(job.handle), 6);
            job->unsupported_flag = 0;
            for (const int format : {53, 54, 55, 56, 57}) {
                job->packed_format = format;
                const bool known = domain == 32 || (format >= 54 && format <= 56);
                EXPECT_EQ(dft::dfti_commit_descriptor(job.handle), known ? 0 : 6) << "format " << format;
            }
        }
    }
}

TEST_F(Descriptor, APlanThatRefusesIsAKernelFailure) {
    const Job job(35, 32, {6});
    ASSERT_EQ(dft::dfti_commit_descriptor(job.handle), 0);
    dft::Complex<float> data[6] = {};
    job->plan_complex_single->tag = 14;
    EXPECT_EQ(dft::dfti_compute_forward(job.handle, data), 7);
    EXPECT_EQ(dft::dfti_compute_backward(job.handle, data), 7);
    job->plan_complex_single->tag = dft::kDftPlanTag;
}

struct OneShotRow {
    const char* job;
    int precision, domain, format, transforms, inputStride, outputStride;
    int below[4]; // by variant: lengths up to here, exclusively; 0: none, -1: all
    int value;
};

TEST_F(Descriptor, OneShotByVariant) {
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

enum class Path { General, PowerOfTwo };

struct PathRow {
    int length, placement, inputStride, outputStride;
    Path path;
};

TEST_F(Descriptor, PathOfAComplexDimension) {
    const PathRow rows[] = {
        {16, 43, 1, 1, Path::PowerOfTwo}, {16, 44, 1, 1, Path::General},    {16, 44, 2, 1, Path::PowerOfTwo},
        {16, 44, 1, 2, Path::PowerOfTwo}, {16, 43, 3, 3, Path::PowerOfTwo}, {6, 43, 1, 1, Path::General},
        {6, 44, 2, 2, Path::General},     {1, 43, 1, 1, Path::PowerOfTwo},  {1, 44, 1, 1, Path::General},
    };
    const Job single(35, 32, {1});
    const Job twice(36, 32, {1});
    for (const PathRow& row : rows) {
        SCOPED_TRACE(::testing::Message() << "length " << row.length << ", placement " << row.placement << ", strides "
                                          << row.inputStride << ' ' << row.outputStride);
        const bool general = row.path == Path::General;
        for (DftDescriptor* const record : {single.handle, twice.handle}) {
            record->length = row.length;
            record->log2_length = static_cast<std::int32_t>(std::bit_width(static_cast<unsigned int>(row.length))) - 1;
            record->placement = row.placement;
            record->input_stride = row.inputStride;
            record->output_stride = row.outputStride;
            ASSERT_EQ(dft::dfti_commit_descriptor(record), 0);
            EXPECT_EQ(record->general_length, general ? 1 : 0);
            EXPECT_EQ(record->workspace_bytes, record->workspace_need > 16 ? record->workspace_need : 0);
            EXPECT_EQ(record->workspace_bytes > 16, general && row.length > 4);
        }
        EXPECT_EQ(single->plan_complex_single != nullptr, general);
        EXPECT_EQ(single->table_single != nullptr, !general);
        EXPECT_EQ(twice->plan_complex_double != nullptr, general);
        EXPECT_EQ(twice->table_double != nullptr, !general);
        EXPECT_EQ(single->forward_single, general ? dft::general_forward_single : dft::c1d_forward_pow2);
        EXPECT_EQ(single->backward_single, general ? dft::general_backward_single : dft::c1d_backward_pow2);
        EXPECT_EQ(twice->forward_double, general ? dft::general_forward_double : dft::z1d_forward_pow2);
        EXPECT_EQ(twice->backward_double, general ? dft::general_backward_double : dft::z1d_backward_pow2);
        EXPECT_TRUE(single->plan_complex_double == nullptr && single->table_double == nullptr &&
                    twice->plan_complex_single == nullptr && twice->table_single == nullptr);
        if (!general) {
            EXPECT_TRUE(single->c1d_forw_dft == dft::c1d_forw_dft && single->c1d_back_dft == dft::c1d_back_dft);
            EXPECT_TRUE(twice->z1d_forw_dft == dft::z1d_forw_dft && twice->z1d_back_dft == dft::z1d_back_dft);
        }
    }
}

TEST_F(Descriptor, CommitHandsTheFieldsOfTheHeadToAllRecords) {
    const Job job(35, 32, {6, 8, 10});
    DftDescriptor* const head = job.handle;
    std::int32_t DftDescriptor::*const fields[] = {&DftDescriptor::number_of_transforms,
                                                   &DftDescriptor::packed_format,
                                                   &DftDescriptor::ordering,
                                                   &DftDescriptor::placement,
                                                   &DftDescriptor::cfg_a,
                                                   &DftDescriptor::cfg_b,
                                                   &DftDescriptor::cfg_e,
                                                   &DftDescriptor::cfg_f,
                                                   &DftDescriptor::cfg_g,
                                                   &DftDescriptor::input_offset,
                                                   &DftDescriptor::output_offset,
                                                   &DftDescriptor::input_distance,
                                                   &DftDescriptor::output_distance};
    std::int32_t value = 44;
    for (const auto field : fields) {
        head->*field = value++;
    }
    ASSERT_EQ(dft::dfti_commit_descriptor(head), 0);
    for (const DftDescriptor* record = head; record != nullptr; record = record->next) {
        value = 44;
        for (const auto field : fields) {
            EXPECT_EQ(record->*field, value++) << "record " << record->dimension_index;
        }
        EXPECT_EQ(record->forward_domain, 32);
        EXPECT_EQ(record->precision, 35);
        EXPECT_EQ(record->commit_state, dft::DFT_COMMITTED);
    }
    EXPECT_EQ(head->workspace_bytes, head->workspace_need);
    EXPECT_GT(head->workspace_need, head[2].workspace_need);
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

TEST_F(Descriptor, CommitMayBeRepeated) {
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

TEST_F(Descriptor, EveryRefusedAllocationIsStatus1AndLeaksNothing) {
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

TEST_F(Descriptor, AFailedCommitCutsTheChainBehindTheRecord) {
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
TEST_F(Descriptor, OneShotJobsHonourOffsetsAndScale) {
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

TEST_F(Descriptor, RealJobsOfSeveralTransformsComputeAllOfThem) {
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
