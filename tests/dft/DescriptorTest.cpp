// Descriptors: statuses of their operations, fields after creation and commit, which jobs are one call of a routine,
// repeated and failed commits, and memory that runs out.
#include "dft/DriverFixture.h"
#include "dft/plans/dft_plan.h"
#include "dft/pow2/pow2.h"
#include "simd/VectorClass.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

namespace {

using dft::DftDescriptor;
using JobLife = Descriptor;

TEST_F(Descriptor, StatusesOfCreation) {
    struct Row {
        int status, precision, domain;
        std::vector<Lengths> lengths;
    };
    const Row rows[] = {
        {0, 35, 32, {{16}, Lengths(7, 1)}},
        {0, 36, 32, {{5, 3}}},
        {0, 36, 33, {{9}}},
        {3, 35, 32, {{}, Lengths(8, 2), Lengths(100, 2), {0}, {-4}, {4, 0}, {0, 4}, {4, -1, 4}}},
        {3, 35, 31, {{4, 4}}},
        {3, 35, 99, {{4}}},
        {3, 34, 32, {{4}}},
        {3, 37, 33, {{4}}},
        {3, 99, 34, {{0}}},
        {6, 35, 33, {{4, 4}}},
        {6, 35, 34, {{4}, {4, 4}}},
        {6, 99, 33, {{4, 4}}},
        {6, 99, 34, {{4}}},
    };
    for (const Row& row : rows) {
        for (const Lengths& lengths : row.lengths) {
            SCOPED_TRACE(::testing::Message() << "precision " << row.precision << ", domain " << row.domain
                                              << ", lengths " << ::testing::PrintToString(lengths));
            DftDescriptor* handle = nullptr;
            ASSERT_EQ(Create(&handle, row.precision, row.domain, lengths), row.status);
            EXPECT_EQ(handle != nullptr, row.status == 0);
            EXPECT_EQ(dft::engine_block_table[0].owner_thread != 0, row.status == 0) << "a block is still held";
            EXPECT_EQ(dft::dfti_free_descriptor(&handle), row.status == 0 ? 0 : 3);
        }
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
    const Job job(36, 32, {5, 1, 8});
    const DftDescriptor& head = *job.handle;
    EXPECT_EQ((std::vector{head.cfg_a,           head.forward_domain, head.precision,       head.number_of_transforms,
                           head.cfg_b,           head.cfg_c,          head.cfg_d,           head.placement,
                           head.packed_format,   head.cfg_e,          head.cfg_f,           head.ordering,
                           head.cfg_g,           head.input_offset,   head.output_offset,   head.input_distance,
                           head.output_distance, head.commit_state,   head.workspace_bytes, head.one_shot}),
              (std::vector{37, 32, 36, 1, 39, 42, 40, 43, 54, 46, 51, 48, 53, 0, 0, 0, 0, 31, 0, 0}));
    // Index, length, strides, products, longest length, its binary logarithm rounded down, whether a plan serves it.
    const std::vector<int> records[] = {{0, 8, 1, 1, 40, 8, 3, 0}, {1, 1, 8, 8, 8, 8, 0, 0}, {2, 5, 8, 8, 40, 8, 2, 1}};
    for (int i = 0; i < 3; ++i) {
        const DftDescriptor& r = job.handle[i];
        EXPECT_EQ(std::string(r.tag, 3), "DFT");
        EXPECT_EQ(r.previous, i > 0 ? &r - 1 : nullptr);
        EXPECT_EQ(r.next, i < 2 ? &r + 1 : nullptr);
        EXPECT_EQ((std::vector{r.dimension_index, r.length, r.input_stride, r.output_stride, r.running_product,
                               r.longest_length, r.log2_length, r.general_length}),
                  records[i]);
        EXPECT_EQ((std::vector{r.rank, r.workspace_need, r.unsupported_flag}), (std::vector{3, 0, 0}));
        EXPECT_EQ((std::vector<double>{r.forward_scale_single, r.backward_scale_single, r.forward_scale_double,
                                       r.backward_scale_double}),
                  std::vector<double>(4, 1.0));
        EXPECT_TRUE(r.table_single == nullptr && r.table_double == nullptr && r.plan_complex_single == nullptr &&
                    r.plan_complex_double == nullptr && r.plan_real_single == nullptr && r.plan_real_double == nullptr);
    }
}

TEST_F(Descriptor, StatusesOfCommitComputeAndFree) {
    alignas(double) float data[80] = {};
    EXPECT_EQ(dft::dfti_commit_descriptor(nullptr), 3);
    EXPECT_EQ(dft::dfti_free_descriptor(nullptr), 3);
    for (const int domain : {32, 33}) {
        for (const int precision : {35, 36}) {
            SCOPED_TRACE(::testing::Message() << "precision " << precision << ", domain " << domain);
            Job job(precision, domain, {6});
            const auto forwardAndBackward = [&](void* input, void* output, int status) {
                EXPECT_EQ(dft::dfti_compute_forward(job.handle, input, output), status);
                EXPECT_EQ(dft::dfti_compute_backward(job.handle, input, output), status);
            };
            for (const int placement : {44, 43}) {
                job->placement = placement;
                job->commit_state = dft::DFT_UNCOMMITTED;
                forwardAndBackward(data, data + 40, 2);
                for (char& letter : job->tag) {
                    letter ^= 1;
                    forwardAndBackward(data, data + 40, 5);
                    forwardAndBackward(nullptr, data + 40, 3);
                    EXPECT_EQ(dft::dfti_commit_descriptor(job.handle), 5);
                    EXPECT_EQ(dft::dfti_free_descriptor(&job.handle), 5);
                    letter ^= 1;
                }
                EXPECT_EQ(dft::dfti_commit_descriptor(job.handle), 0);
                EXPECT_EQ(job->commit_state, dft::DFT_COMMITTED);
                forwardAndBackward(nullptr, data + 40, 3);
                forwardAndBackward(data, nullptr, placement == 43 ? 0 : 3);
                forwardAndBackward(data, data + 40, 0);
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

TEST_F(Descriptor, PathOfAComplexDimension) {
    struct Row {
        int length, placement, inputStride, outputStride;
        bool isGeneral; ///< else the path of powers of two
    };
    const Row rows[] = {{16, 43, 1, 1, false}, {16, 44, 1, 1, true},  {16, 44, 2, 1, false},
                        {16, 44, 1, 2, false}, {16, 43, 3, 3, false}, {6, 43, 1, 1, true},
                        {6, 44, 2, 2, true},   {1, 43, 1, 1, false},  {1, 44, 1, 1, true}};
    for (const Row& row : rows) {
        for (const bool isSingle : {true, false}) {
            SCOPED_TRACE(::testing::Message() << "length " << row.length << ", placement " << row.placement
                                              << ", strides " << row.inputStride << ' ' << row.outputStride);
            const Job job(isSingle ? 35 : 36, 32, {row.length}, row.placement);
            job->input_stride = row.inputStride;
            job->output_stride = row.outputStride;
            job.Commit();
            EXPECT_EQ(job->general_length, row.isGeneral ? 1 : 0);
            EXPECT_EQ(job->workspace_bytes, job->workspace_need);
            EXPECT_EQ(job->workspace_bytes > 16, row.isGeneral && row.length > 4);
            EXPECT_EQ(job->plan_complex_single != nullptr, row.isGeneral && isSingle);
            EXPECT_EQ(job->plan_complex_double != nullptr, row.isGeneral && !isSingle);
            for (const bool isSet : {job->table_single != nullptr, job->forward_single == dft::c1d_forward_pow2,
                                     job->backward_single == dft::c1d_backward_pow2,
                                     job->c1d_forw_dft == dft::c1d_forw_dft, job->c1d_back_dft == dft::c1d_back_dft}) {
                EXPECT_EQ(isSet, !row.isGeneral && isSingle);
            }
            for (const bool isSet : {job->table_double != nullptr, job->forward_double == dft::z1d_forward_pow2,
                                     job->backward_double == dft::z1d_backward_pow2,
                                     job->z1d_forw_dft == dft::z1d_forw_dft, job->z1d_back_dft == dft::z1d_back_dft}) {
                EXPECT_EQ(isSet, !row.isGeneral && !isSingle);
            }
        }
    }
}

auto HandedOn(DftDescriptor& r) {
    return std::tie(r.number_of_transforms, r.packed_format, r.ordering, r.placement, r.cfg_a, r.cfg_b, r.cfg_e,
                    r.cfg_f, r.cfg_g, r.input_offset, r.output_offset, r.input_distance, r.output_distance);
}

TEST_F(Descriptor, CommitHandsTheFieldsOfTheHeadToAllRecords) {
    const Job job(35, 32, {6, 8, 10});
    const auto values = std::tuple(44, 45, 46, 47, 48, 49, 50, 51, 52, 53, 54, 55, 56);
    HandedOn(*job.handle) = values;
    job.Commit();
    for (DftDescriptor* record = job.handle; record != nullptr; record = record->next) {
        EXPECT_TRUE(HandedOn(*record) == values) << "record " << record->dimension_index;
        EXPECT_EQ((std::vector{record->forward_domain, record->precision, record->commit_state}),
                  (std::vector<std::int32_t>{32, 35, dft::DFT_COMMITTED}));
    }
    EXPECT_EQ(job->workspace_bytes, job->workspace_need);
    EXPECT_GT(job->workspace_need, job.handle[2].workspace_need);
}

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

// Every method of a plan, complex and real; lines, planes and volumes; everything that asks for memory when it runs.
struct JobRow {
    int precision, domain, placement;
    Layout layout;
};
const JobRow kJobs[] = {
    {36, 32, 44, {"tiny", {3}, {}, {}}},
    {35, 32, 43, {"direct", {13}, {}, {}}},
    {36, 32, 43, {"mixed radix", {1078}, {}, {}}},
    {35, 32, 44, {"general power of two", {64}, {}, {}}},
    {35, 32, 44, {"long general power of two", {65536}, {}, {}}},
    {35, 32, 44, {"strided line", {200}, {{3}}, {{2}}}},
    {35, 32, 43, {"lines by Bluestein", {302}, {{}, 0, 302}, {}, 9}},
    {35, 32, 43, {"general plane", {10, 14}, {}, {}}},
    {36, 32, 44, {"general plane out of place", {9, 151}, {}, {}}},
    {35, 32, 43, {"large plane", {64, 49}, {}, {}}},
    {35, 32, 43, {"power of two", {8192}, {}, {}}},
    {35, 32, 43, {"short power of two", {4096}, {}, {}}},
    {35, 32, 43, {"strided power of two", {8192}, {{3}}, {{2}}}},
    {36, 32, 43, {"power-of-two plane", {64, 32}, {}, {}}},
    {35, 32, 43, {"rank 3", {6, 8, 157}, {}, {}}},
    {36, 32, 44, {"rank 3, double", {4, 150, 7}, {}, {}}},
    {35, 33, 43, {"real, tiny", {3}, {}, {}}},
    {36, 33, 43, {"real, direct", {179}, {}, {}}},
    {35, 33, 43, {"real by Bluestein", {181}, {}, {}}},
    {35, 33, 43, {"real by Bluestein, even", {302}, {}, {}}},
    {36, 33, 44, {"real, mixed radix", {1001}, {}, {}}},
    {35, 33, 44, {"real, mixed radix, even", {360}, {}, {}}},
    {36, 33, 44, {"real power of two", {64}, {}, {}}},
    {36, 33, 43, {"real lines", {60}, {{2}, 0, 124}, {{2}, 0, 124}, 3}},
};

/// Input and output of any of them; taken as double precision, the numbers are small ones.
const auto kData = dft_slow::RandomLine<dft::Complex<float>>(140000, 5);

TEST_F(JobLife, CommitMayBeRepeated) {
    for (const JobRow& row : kJobs) {
        SCOPED_TRACE(row.layout);
        const Job job(row.precision, row.domain, row.layout.lengths);
        row.layout.LayOut(job.handle);
        std::vector<std::vector<dft::Complex<float>>> results;
        std::vector<int> live;
        for (int round = 0; round < 2; ++round) {
            // The other placement in between leaves nothing behind.
            for (const int placement : {87 - row.placement, row.placement}) {
                job->placement = placement;
                job.Commit();
            }
            results.push_back(kData);
            EXPECT_EQ(job.Compute(-1, &results.back()[0], &results.back()[70000]), 0);
            live.push_back(m_Allocator.Live());
        }
        EXPECT_TRUE(AreSame(results[0], results[1]));
        EXPECT_EQ(live[0], live[1]);
    }
}

// Steps of a life, cut where a status is not 0.
std::int32_t Live(const JobRow& row, DftDescriptor** handle) {
    auto data = kData;
    std::int32_t status = Create(handle, row.precision, row.domain, row.layout.lengths);
    if (status == 0) {
        (*handle)->placement = row.placement;
        row.layout.LayOut(*handle);
        status = dft::dfti_commit_descriptor(*handle);
    }
    for (const auto compute : {dft::dfti_compute_forward, dft::dfti_compute_backward}) {
        if (status == 0) {
            status = compute(*handle, &data[0], &data[70000]);
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
                SCOPED_TRACE(::testing::Message() << row.layout << ", threads " << threads << ", uncached " << disabled
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
            EXPECT_GT(refused, 2) << row.layout;
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
