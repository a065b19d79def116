// Transforms inside threads, with and without threads inside them. Threads by themselves: DriverTest.cpp, Pow2Test.cpp.
#include "dft/dft.h"

#include "dft/TestJob.h"
#include "dft/TestSurroundings.h"
#include "dft/base/chunks.h"
#include "reference/dft_slow.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <cstddef>
#include <cstdint>
#include <numeric>
#include <ostream>
#include <vector>

namespace {

struct JobShape {
    std::vector<int> lengths;
    int transforms = 1;

    std::size_t Elements() const {
        return std::accumulate(
            lengths.begin(), lengths.end(), static_cast<std::size_t>(transforms),
            [](std::size_t product, int length) { return product * static_cast<std::size_t>(length); });
    }
    friend std::ostream& operator<<(std::ostream& out, const JobShape& shape) {
        for (const int length : shape.lengths) {
            out << length << ' ';
        }
        return out << "times " << shape.transforms;
    }
};

// On both sides of the limits below which a job stays on one thread; fewer rows, columns and planes than threads.
const std::vector<JobShape> kShapes = {
    {{1000}},     {{2048}},      {{8192}},        {{65536}},   {{2003}},    {{45, 45}},
    {{23, 89}},   {{64, 32}},    {{61, 151}},     {{2, 1100}}, {{1100, 2}}, {{302, 12}},
    {{128, 256}}, {{9, 14, 21}}, {{3, 5, 8, 30}}, {{100}, 7},  {{64}, 2},   {{4096}, 3},
};

template <typename Real>
std::vector<dft::Complex<Real>> Transformed(const JobShape& shape) {
    TestJob<Real> job(shape.lengths);
    if (shape.transforms != 1) {
        job->number_of_transforms = shape.transforms;
        job->input_distance = job->output_distance = job->running_product;
        job.Commit();
    }
    return job.Run(-1, dft_slow::RandomLine<dft::Complex<Real>>(shape.Elements(), 5));
}

constexpr int kCallers = 4;
constexpr int kRounds = 8;

// The engine's own threads besides: each caller forks its own.
class DftCallers : public ::testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(EngineThreads, DftCallers, ::testing::Values(1, 2));

TEST_P(DftCallers, WithJobsOfTheirOwn) {
    const EngineThreads engine(GetParam());
    std::vector<std::vector<dft::Complex<float>>> expected;
    for (const JobShape& shape : kShapes) {
        expected.push_back(Transformed<float>(shape));
    }
    OnThreads(kCallers, [&](int caller) {
        omp_set_num_threads(GetParam()); // each thread has a number of its own
        for (std::size_t k = 0; k < kShapes.size(); ++k) {
            const std::size_t at = (k + static_cast<std::size_t>(caller) * 5) % kShapes.size();
            EXPECT_TRUE(AreSame(Transformed<float>(kShapes[at]), expected[at])) << kShapes[at] << ", caller " << caller;
        }
    });
}

TEST_P(DftCallers, WithOneJobAmongThem) {
    const EngineThreads engine(GetParam());
    for (const JobShape& shape : kShapes) {
        const TestJob<double> job(shape.lengths);
        const auto x = dft_slow::RandomLine<dft::Complex<double>>(shape.Elements(), 7);
        const std::vector<dft::Complex<double>> expected[] = {job.Run(-1, x), job.Run(1, x)};
        OnThreads(kCallers, [&](int caller) {
            omp_set_num_threads(GetParam());
            for (int round = 0; round < kRounds; ++round) {
                const int backward = (caller + round) % 2;
                EXPECT_TRUE(AreSame(job.Run(kSigns[backward], x), expected[backward]))
                    << shape << ", caller " << caller;
            }
        });
    }
}

// A caller that is itself a thread of a parallel region gets no region of its own, and the same bytes.
TEST(DftThreads, InsideAParallelRegion) {
    const EngineThreads engine(2);
    const JobShape shape = {{61, 151}};
    const auto expected = Transformed<float>(shape);
    dft::RunChunks(2, 2,
                   [&](int chunk) { EXPECT_TRUE(AreSame(Transformed<float>(shape), expected)) << "chunk " << chunk; });
}

} // namespace
