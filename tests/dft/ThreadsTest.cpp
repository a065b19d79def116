// Transforms inside threads, with and without threads inside them. Threads by themselves: DriverTest.cpp, Pow2Test.cpp.
#include "dft/DriverFixture.h"
#include "dft/base/chunks.h"

namespace {

// On both sides of the limits below which a job stays on one thread; fewer rows, columns and planes than threads.
const Lengths kShapes[] = {{1000},    {2048},    {8192},    {65536},   {2003},     {45, 45},    {23, 89},     {64, 32},
                           {61, 151}, {2, 1100}, {1100, 2}, {302, 12}, {128, 256}, {9, 14, 21}, {3, 5, 8, 30}};

/// Both directions of a dense job.
template <typename Real>
std::vector<dft::Complex<Real>> ThereAndBack(const TestJob<Real>& job) {
    const auto elements = static_cast<std::size_t>(job->running_product * job->number_of_transforms);
    return job.Run(1, job.Run(-1, dft_slow::RandomLine<dft::Complex<Real>>(elements, 5)));
}

// The engine's own threads besides: each caller forks its own.
class DftCallers : public ::testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(EngineThreads, DftCallers, ::testing::Values(1, 2));

TEST_P(DftCallers, WithOneJobAmongThemAndJobsOfTheirOwn) {
    const EngineThreads engine(GetParam());
    for (const Lengths& shape : kShapes) {
        for (const int transforms : {1, 3}) {
            const auto create = [&](const auto& job) {
                job->number_of_transforms = transforms;
                job->input_distance = job->running_product;
                job.Commit();
            };
            const TestJob<double> shared(shape);
            create(shared);
            const auto expected = ThereAndBack(shared);
            OnThreads(4, [&](int caller) {
                omp_set_num_threads(GetParam()); // each thread has a number of its own
                const TestJob<double> own(shape);
                create(own);
                for (int round = 0; round < 4; ++round) {
                    EXPECT_TRUE(AreSame(ThereAndBack((caller + round) % 2 == 0 ? own : shared), expected))
                        << ::testing::PrintToString(shape) << " x " << transforms << ", caller " << caller;
                }
            });
        }
    }
}

// A caller that is itself a thread of a parallel region gets no region of its own, and the same bytes.
TEST(DftThreads, InsideAParallelRegion) {
    const EngineThreads engine(2);
    EXPECT_EQ(dft::engine_maximum_threads(), 2);
    const auto expected = ThereAndBack(TestJob<float>({61, 151}));
    dft::RunChunks(2, 2, [&](int chunk) {
        EXPECT_EQ(dft::engine_maximum_threads(), 1);
        EXPECT_TRUE(AreSame(ThereAndBack(TestJob<float>({61, 151})), expected)) << "chunk " << chunk;
    });
}

} // namespace
