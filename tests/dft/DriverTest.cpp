// The drivers: where the elements of a job lie, which routine is called on which line, and what comes of its status.
#include "dft/driver/drivers.h"

#include "common/GuardedBuffer.h"
#include "common/VectorClassTest.h"
#include "dft/TestJob.h"
#include "dft/TestSurroundings.h"
#include "dft/driver/record_fields.h"
#include "reference/dft_slow.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <ostream>
#include <vector>

namespace {

using dft::DftDescriptor;
using dft::Direction;

/// Where one side of a job lies. Strides slowest dimension first, as the lengths; none: dense.
struct Place {
    std::vector<int> strides;
    int offset = 0;
    int distance = 0;
};
struct Layout {
    const char* name;
    std::vector<int> lengths;
    Place input;
    Place output;
    int transforms = 1;

    friend std::ostream& operator<<(std::ostream& out, const Layout& layout) { return out << layout.name; }

    std::size_t Elements() const {
        std::size_t count = 1;
        for (const int length : lengths) {
            count *= static_cast<std::size_t>(length);
        }
        return count;
    }
    int Stride(const Place& place, std::size_t dimension) const {
        int stride = 1;
        for (std::size_t k = dimension + 1; k < lengths.size(); ++k) {
            stride *= lengths[k];
        }
        return place.strides.empty() ? stride : place.strides[dimension];
    }
    /// Of every element of the job, transform after transform, the last dimension fastest.
    std::vector<std::size_t> Positions(const Place& place) const {
        std::vector<std::size_t> positions;
        for (int t = 0; t < transforms; ++t) {
            for (std::size_t index = 0; index < Elements(); ++index) {
                int at = place.offset + t * place.distance;
                std::size_t rest = index;
                for (std::size_t k = lengths.size(); k-- > 0;) {
                    const auto length = static_cast<std::size_t>(lengths[k]);
                    at += static_cast<int>(rest % length) * Stride(place, k);
                    rest /= length;
                }
                positions.push_back(static_cast<std::size_t>(at));
            }
        }
        return positions;
    }
};

// Lines below, at and above the lanes of a batch; several lines only where they share no element.
const std::vector<Layout> kLayouts = {
    {"one line", {100}, {{}, 4}, {{}, 1}},
    {"strided line", {60}, {{3}, 5}, {{2}, 1}},
    {"strided power of two", {4096}, {{2}, 1}, {{3}, 0}},
    {"long power of two", {8192}, {{1}, 3}, {{2}, 0}},
    {"lines one after the other", {60}, {{}, 2, 61}, {{}, 0, 60}, 19},
    {"interleaved lines", {34}, {{20}, 1, 1}, {{1}, 0, 35}, 20},
    {"entangled lines", {9}, {{6}, 0, 2}, {{2}, 30, 1}, 2},
    {"backward lines", {21}, {{-2}, 45, 60}, {{1}, 90, -30}, 4},
    {"powers of two", {64}, {{}, 0, 70}, {{}, 0, 64}, 5},
    {"single element", {1}, {{}, 1, 2}, {{}, 0, 1}, 3},
    {"dense plane", {17, 34}, {}, {}},
    {"wide rows", {34, 17}, {{20, 1}, 3}, {{18, 1}, 0}},
    {"strided rows", {9, 18}, {{40, 2}, 1}, {{36, 2}, 0}},
    {"columns before rows", {20, 18}, {{1, 21}, 2}, {{1, 20}, 0}},
    {"upside down", {20, 17}, {{-17, 1}, 323}, {{20, -1}, 16}},
    {"three columns", {8, 3}, {}, {{4, 1}, 1}},
    {"five columns", {6, 5}, {{6, 1}, 1}, {}},
    {"one column", {60, 1}, {{2, 1}, 1}, {}},
    {"one row", {1, 60}, {{90, 1}, 1}, {}},
    {"one element", {1, 1}, {{}, 2}, {}},
    {"plane of powers of two", {64, 33}, {{40, 1}, 0}, {{33, 1}, 5}},
    {"plane of 2047", {23, 89}, {{90, 1}, 0}, {}},
    {"plane of 2048", {64, 32}, {}, {}},
    {"fewer rows than threads", {3, 700}, {{701, 1}, 0}, {}},
    {"long column", {2100, 1}, {}, {}},
    {"long row", {1, 2100}, {}, {}},
    {"Bluestein and direct method", {151, 149}, {}, {}},
    {"planes", {12, 10}, {{12, 1}, 2, 150}, {{10, 1}, 0, 121}, 5},
    {"volume", {5, 6, 18}, {}, {}},
    {"wide volume", {4, 7, 9}, {{90, 10, 1}, 4}, {{1, 4, 28}, 0}},
    {"flat volume", {3, 1, 20}, {}, {{21, 99, 1}, 0}},
    {"thin volume", {4, 5, 1}, {{6, 1, 40}, 0}, {}},
    {"volumes", {2, 3, 16}, {{}, 1, 100}, {{60, 18, 1}, 0, 120}, 3},
    {"four dimensions", {3, 2, 5, 8}, {{100, 45, 9, 1}, 0}, {}},
    {"seven dimensions", {2, 3, 1, 2, 3, 2, 5}, {}, {{1, 2, 6, 6, 12, 36, 72}, 0}},
};

// The scale factor of record k, and whether its pass runs.
double Scale(int k, Direction direction) {
    constexpr double scales[2][3] = {{0.5, 1, 3}, {1, 0.25, 1.25}};
    return scales[direction][k % 3];
}
void SetScales(DftDescriptor& record) {
    record.forward_scale_single = static_cast<float>(Scale(record.dimension_index, dft::kForward));
    record.forward_scale_double = Scale(record.dimension_index, dft::kForward);
    record.backward_scale_single = static_cast<float>(Scale(record.dimension_index, dft::kBackward));
    record.backward_scale_double = Scale(record.dimension_index, dft::kBackward);
}

template <typename Real>
dft::DftRoutine& SlotOf(DftDescriptor& record, Direction direction) {
    if constexpr (sizeof(Real) == sizeof(float)) {
        return direction == dft::kForward ? record.forward_single : record.backward_single;
    } else {
        return direction == dft::kForward ? record.forward_double : record.backward_double;
    }
}

/// A committed job laid out as told, whose slots can be watched.
template <typename Real>
class Job {
public:
    Job(const Layout& layout, std::int32_t placement) : m_Job(layout.lengths, placement) {
        DftDescriptor* const head = m_Job.operator->();
        for (int k = 0; k < head->rank; ++k) {
            const auto dimension = layout.lengths.size() - 1 - static_cast<std::size_t>(k);
            head[k].input_stride = layout.Stride(layout.input, dimension);
            head[k].output_stride = layout.Stride(layout.output, dimension);
            SetScales(head[k]);
        }
        head->number_of_transforms = layout.transforms;
        head->input_offset = layout.input.offset;
        head->output_offset = layout.output.offset;
        head->input_distance = layout.input.distance;
        head->output_distance = layout.output.distance;
        m_Job.Commit();
    }
    DftDescriptor* operator->() { return m_Job.operator->(); }
    DftDescriptor* head() { return m_Job.operator->(); }

    /// 1 thread: the serial driver.
    std::int32_t Run(Direction direction, int threads, dft::Complex<Real>* input, dft::Complex<Real>* output) {
        if (head()->placement == dft::DFT_INPLACE) {
            return threads == 1 ? dft::RunSerial(head(), direction, input)
                                : dft::RunThreaded(head(), direction, input, threads);
        }
        const dft::Complex<Real>* const constInput = input;
        return threads == 1 ? dft::RunSerial(head(), direction, constInput, output)
                            : dft::RunThreaded(head(), direction, constInput, output, threads);
    }

    /// From now on every slot of the direction counts its calls, and call `failing` of a record's returns 7.
    void Watch(Direction direction, int failingRecord = -1, int failing = -1) {
        for (int k = 0; k < head()->rank; ++k) {
            s_Before[k] = SlotOf<Real>(head()[k], direction);
            SlotOf<Real>(head()[k], direction) = Watched;
            s_Calls[k] = 0;
        }
        s_FailingRecord = failingRecord;
        s_Failing = failing;
        s_IsInRegion = false;
    }
    static int Calls(int record) { return s_Calls[record]; }
    static bool WasInRegion() { return s_IsInRegion; }

private:
    static std::int32_t Watched(void* input, void* output, DftDescriptor* record, void* work) {
        const int call = s_Calls[record->dimension_index]++;
        s_IsInRegion = s_IsInRegion || omp_in_parallel() != 0;
        if (record->dimension_index == s_FailingRecord && call == s_Failing) {
            return dft::DFT_KERNEL_FAILURE;
        }
        return s_Before[record->dimension_index](input, output, record, work);
    }
    static inline dft::DftRoutine s_Before[dft::kMaximumRank];
    static inline std::atomic<int> s_Calls[dft::kMaximumRank];
    static inline std::atomic<bool> s_IsInRegion;
    static inline int s_FailingRecord;
    static inline int s_Failing;

    TestJob<Real> m_Job;
};

/// The arrays of one job, no larger than its elements reach.
template <typename Real>
class Arrays {
public:
    using Element = dft::Complex<Real>;

    Arrays(const Layout& layout, std::int32_t placement, const std::vector<Element>& x,
           std::size_t misalignment = sizeof(Real))
        : m_InputPositions(layout.Positions(layout.input)), m_OutputPositions(layout.Positions(layout.output)),
          m_IsInPlace(placement == dft::DFT_INPLACE), m_Input(End(m_InputPositions), misalignment),
          m_Output(End(m_OutputPositions), misalignment), m_Elements(x) {
        Fill(m_Input);
        Fill(m_Output);
        for (std::size_t k = 0; k < x.size(); ++k) {
            m_Input.Write(m_InputPositions[k], x[k]);
        }
    }
    Element* input() { return m_Input.data(); }
    Element* output() { return m_Output.data(); }

    /// The result; everything but its elements must be as it was.
    std::vector<Element> Result() const {
        const GuardedBuffer<Element>& array = m_IsInPlace ? m_Input : m_Output;
        const std::vector<std::size_t>& positions = m_IsInPlace ? m_InputPositions : m_OutputPositions;
        std::vector<Element> result;
        for (const std::size_t at : positions) {
            result.push_back(array.Read(at));
        }
        GuardedBuffer<Element> expected(array.size(), sizeof(Real));
        Fill(expected);
        for (std::size_t k = 0; k < positions.size(); ++k) {
            expected.Write(positions[k], result[k]);
        }
        EXPECT_TRUE(SameBytes(expected, array)) << "outside the job";
        EXPECT_TRUE(m_Input.GuardsIntact());
        EXPECT_TRUE(m_Output.GuardsIntact());
        for (std::size_t k = 0; k < m_Elements.size() && !m_IsInPlace; ++k) {
            EXPECT_EQ(m_Input.Read(m_InputPositions[k]).re, m_Elements[k].re) << "the input was changed at " << k;
        }
        return result;
    }

private:
    static std::size_t End(const std::vector<std::size_t>& positions) {
        return *std::max_element(positions.begin(), positions.end()) + 1;
    }
    static void Fill(GuardedBuffer<Element>& array) {
        for (std::size_t k = 0; k < array.size(); ++k) {
            array.Write(k, {static_cast<Real>(k), Real{-1}});
        }
    }

    std::vector<std::size_t> m_InputPositions;
    std::vector<std::size_t> m_OutputPositions;
    bool m_IsInPlace;
    GuardedBuffer<Element> m_Input;
    GuardedBuffer<Element> m_Output;
    std::vector<Element> m_Elements;
};

constexpr std::int32_t kPlacements[] = {dft::DFT_INPLACE, dft::DFT_NOT_INPLACE};
constexpr Direction kDirections[] = {dft::kForward, dft::kBackward};

/// Every transform of the layout by the definition, scale factors included.
dft_slow::WideLine Definition(const Layout& layout, Direction direction) {
    const auto x =
        dft_slow::RandomLine<dft::Complex<double>>(layout.Elements() * static_cast<std::size_t>(layout.transforms), 3);
    double scale = 1;
    const int rank = static_cast<int>(layout.lengths.size());
    for (int k = 0; k < rank; ++k) {
        const bool runs = k == 0 || layout.lengths[static_cast<std::size_t>(rank - 1 - k)] > 1;
        scale *= runs ? Scale(k, direction) : 1;
    }
    dft_slow::WideLine all;
    for (auto start = x.begin(); start != x.end(); start += static_cast<std::ptrdiff_t>(layout.Elements())) {
        const std::vector<dft::Complex<double>> one(start, start + static_cast<std::ptrdiff_t>(layout.Elements()));
        for (const auto& value : dft_slow::TransformNd(one, layout.lengths, direction == dft::kForward ? -1 : 1)) {
            all.push_back(value * static_cast<long double>(scale));
        }
    }
    return all;
}

template <typename Real>
void CheckLayout(const Layout& layout, Direction direction, const dft_slow::WideLine& wide) {
    using Result = std::vector<dft::Complex<Real>>;
    const auto x = dft_slow::RandomLine<dft::Complex<Real>>(wide.size(), 3);
    const double tolerance = sizeof(Real) == sizeof(float) ? 1e-6 : 1e-14; // some ten roundings of an element
    for (const std::int32_t placement : kPlacements) {
        SCOPED_TRACE(::testing::Message() << layout << ", direction " << direction << ", placement " << placement
                                          << ", " << sizeof(Real) << " bytes");
        Job<Real> job(layout, placement);
        const auto run = [&](int threads) {
            // Within an element, and within a cache line: groups of lines begin differently.
            Arrays<Real> arrays(layout, placement, x, threads == 2 ? 3 * sizeof(x[0]) : sizeof(Real));
            EXPECT_EQ(job.Run(direction, threads, arrays.input(), arrays.output()), dft::DFT_OK);
            return arrays.Result();
        };
        const Result serial = run(1);
        EXPECT_LT(dft_slow::RelativeError(serial, wide), tolerance);
        for (const int threads : {2, 5}) {
            EXPECT_TRUE(TestJob<Real>::SameBytes(run(threads), serial)) << threads << " threads";
        }
        job.Watch(direction);
        EXPECT_TRUE(TestJob<Real>::SameBytes(run(1), serial)) << "line by line";
        for (int k = 0; k < job->rank; ++k) {
            const auto lines = x.size() / static_cast<std::size_t>(job.head()[k].length);
            EXPECT_EQ(Job<Real>::Calls(k), k == 0 || job.head()[k].length > 1 ? static_cast<int>(lines) : 0)
                << "record " << k;
        }
        EXPECT_TRUE(TestJob<Real>::SameBytes(run(3), serial)) << "line by line, 3 threads";
    }
}

class DriverTest : public VectorClassTest {};

TEST_P(DriverTest, EveryLayoutOnEveryRoad) {
    for (const Layout& layout : kLayouts) {
        for (const Direction direction : kDirections) {
            const dft_slow::WideLine wide = Definition(layout, direction);
            CheckLayout<float>(layout, direction, wide);
            CheckLayout<double>(layout, direction, wide);
        }
    }
}

// Transforms that lie on one another are done one after the other.
TEST_P(DriverTest, OverlappingTransformsAreDoneInOrder) {
    for (const int distance : {0, 1}) {
        Job<float> one({"", {20}, {}, {}}, dft::DFT_INPLACE);
        Job<float> three({"", {20}, {{}, 0, distance}, {}, 3}, dft::DFT_INPLACE);
        auto expected = dft_slow::RandomLine<dft::Complex<float>>(22, 1);
        auto data = expected;
        for (int t = 0; t < 3; ++t) {
            ASSERT_EQ(one.Run(dft::kForward, 1, expected.data() + t * distance, nullptr), dft::DFT_OK);
        }
        ASSERT_EQ(three.Run(dft::kForward, 1, data.data(), nullptr), dft::DFT_OK);
        EXPECT_TRUE(TestJob<float>::SameBytes(data, expected)) << "distance " << distance;
    }
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(DriverTest);

// A refused call ends its pass, but for columns of a last group of less than four, whose statuses are not looked at.
TEST(Driver, StatusOfTheLastColumnsIsNotTested) {
    struct Row {
        const char* name;
        Layout layout;
        int threads;
        int record, call; ///< that fails
        int status;
        int calls[3];
    };
    const Row rows[] = {
        {"row", {"", {6, 9}, {}, {}}, 1, 0, 2, 7, {3, 0}},
        {"last row", {"", {6, 9}, {}, {}}, 1, 0, 5, 7, {6, 0}},
        {"strided row", {"", {6, 9}, {{20, 2}}, {}}, 1, 0, 2, 7, {3, 0}},
        {"column of a four", {"", {6, 9}, {}, {}}, 1, 1, 5, 7, {6, 6}},
        {"last column of a four", {"", {6, 9}, {}, {}}, 1, 1, 7, 7, {6, 8}},
        {"column behind the fours", {"", {6, 9}, {}, {}}, 1, 1, 8, 0, {6, 9}},
        {"one of three columns", {"", {6, 3}, {}, {}}, 1, 1, 0, 0, {6, 3}},
        {"no columns behind the fours", {"", {6, 8}, {}, {}}, 1, 1, 7, 7, {6, 8}},
        {"strided column", {"", {6, 9}, {{20, 2}}, {}}, 1, 1, 8, 7, {6, 9}},
        {"along the third record", {"", {3, 2, 5}, {}, {}}, 1, 2, 2, 7, {6, 15, 3}},
        {"behind its fours", {"", {3, 2, 5}, {}, {}}, 1, 2, 4, 0, {6, 15, 10}},
        {"one of several lines", {"", {9}, {{}, 0, 9}, {}, 7}, 1, 0, 4, 7, {5}},
        {"first row of each thread", {"", {60, 40}, {}, {}}, 2, 0, 0, 7, {31, 0}},
        {"first column of a thread", {"", {60, 40}, {}, {}}, 2, 1, 0, 7, {60, 21}},
        {"plane of a thread", {"", {3, 6, 9}, {}, {}}, 3, 0, 17, 7, {18, -1, 0}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Job<double> job(row.layout, dft::DFT_INPLACE);
        job.Watch(dft::kForward, row.record, row.call);
        Arrays<double> arrays(row.layout, dft::DFT_INPLACE,
                              dft_slow::RandomLine<dft::Complex<double>>(
                                  row.layout.Elements() * static_cast<std::size_t>(row.layout.transforms), 3));
        EXPECT_EQ(job.Run(dft::kForward, row.threads, arrays.input(), nullptr), row.status);
        for (int k = 0; k < job->rank; ++k) {
            if (row.calls[k] >= 0) {
                EXPECT_EQ(Job<double>::Calls(k), row.calls[k]) << "record " << k;
            }
        }
    }
}

TEST(Driver, RegionsFromTheLimitOfAPlane) {
    struct Row {
        std::vector<int> lengths;
        int transforms;
        bool isInRegion;
    };
    const Row rows[] = {{{23, 89}, 1, false}, {{64, 32}, 1, true},  {{2047, 1}, 1, false},
                        {{2048, 1}, 1, true}, {{1, 2048}, 1, true}, {{6, 10}, 2, true},
                        {{20000}, 1, false},  {{20}, 2, true},      {{2, 2, 2}, 1, true}};
    for (const Row& row : rows) {
        Layout layout = {"", row.lengths, {}, {}, row.transforms};
        layout.input.distance = static_cast<int>(layout.Elements());
        Job<float> job(layout, dft::DFT_INPLACE);
        job.Watch(dft::kForward);
        Arrays<float> arrays(
            layout, dft::DFT_INPLACE,
            dft_slow::RandomLine<dft::Complex<float>>(layout.Elements() * static_cast<std::size_t>(row.transforms), 3));
        EXPECT_EQ(job.Run(dft::kForward, 3, arrays.input(), nullptr), dft::DFT_OK);
        EXPECT_EQ(Job<float>::WasInRegion(), row.isInRegion) << ::testing::PrintToString(row.lengths);
    }
}

std::atomic<int> s_ThreadsOfLine;
std::int32_t RecordThreads(void*, std::int32_t threads, DftDescriptor*) {
    s_ThreadsOfLine = threads;
    return dft::DFT_KERNEL_FAILURE;
}

// Long powers of two in one line go to the threaded routine of the record, by the limits of the variant.
template <typename Real>
void CheckThreadsOfLines(const char* name, std::int32_t variant, std::int32_t placement, int length, int expected) {
    const TestNumber inForce(dft::dft_variant_code, variant);
    Job<Real> job({name, {length}, {{2}}, {{3}}}, placement); // other strides than 1 stay on that road out of place
    job->c1d_forw_dft = job->z1d_forw_dft = RecordThreads;
    const Layout layout = {name, {length}, {{2}}, {{3}}};
    Arrays<Real> arrays(layout, placement, dft_slow::RandomLine<dft::Complex<Real>>(layout.Elements(), 3));
    s_ThreadsOfLine = 0;
    const std::int32_t status = job.Run(dft::kForward, 5, arrays.input(), arrays.output());
    EXPECT_EQ(s_ThreadsOfLine, expected) << "variant " << variant << ", placement " << placement << ", length "
                                         << length << ", " << sizeof(Real) << " bytes";
    EXPECT_EQ(status, expected > 0 ? dft::DFT_KERNEL_FAILURE : dft::DFT_OK);
}

TEST(Driver, ThreadsOfALineByVariant) {
    struct Row {
        std::int32_t variant, placement;
        int length, single, both; ///< threads of five; 0: serial
    };
    const Row rows[] = {
        {2, 43, 1024, 0, 0}, {2, 43, 2048, 0, 2}, {2, 43, 4096, 0, 5}, {2, 43, 8192, 5, 5},  {3, 44, 8192, 5, 5},
        {1, 43, 512, 0, 0},  {1, 43, 1024, 0, 2}, {1, 43, 2048, 5, 5}, {1, 44, 2048, 2, 5},  {1, 44, 4096, 5, 5},
        {0, 44, 2048, 2, 5}, {0, 43, 1024, 0, 2}, {1, 43, 3000, 0, 0}, {2, 44, 10000, 0, 0},
    };
    for (const Row& row : rows) {
        CheckThreadsOfLines<float>("", row.variant, row.placement, row.length, row.single);
        CheckThreadsOfLines<double>("", row.variant, row.placement, row.length, row.both);
    }
}

// Each request of each thread refused in turn: status 1, and nothing stays behind.
TEST(Driver, EveryRefusedAllocationIsStatus1) {
    const Layout layouts[] = {{"line", {200}, {{3}}, {{2}}},  {"power of two", {8192}, {{3}}, {{2}}},
                              {"plane", {64, 49}, {}, {}},    {"strided plane", {30, 70}, {{150, 2}}, {{140, 2}}},
                              {"volume", {5, 6, 18}, {}, {}}, {"lines", {302}, {{}, 0, 302}, {{}, 0, 302}, 9}};
    const TestNumber disabled(dft::fast_mm_disabled, 1); // else blocks of the last run serve
    TestAllocator allocator;
    for (const Layout& layout : layouts) {
        for (const std::int32_t placement : kPlacements) {
            for (const int threads : {1, 3}) {
                SCOPED_TRACE(::testing::Message() << layout << ", placement " << placement << ", threads " << threads);
                Job<float> job(layout, placement);
                Arrays<float> arrays(layout, placement,
                                     dft_slow::RandomLine<dft::Complex<float>>(
                                         layout.Elements() * static_cast<std::size_t>(layout.transforms), 3));
                const int live = allocator.Live();
                int refused = -1;
                bool isRefused = true;
                while (isRefused) {
                    allocator.Refuse(++refused);
                    const auto status = job.Run(dft::kForward, threads, arrays.input(), arrays.output());
                    isRefused = allocator.Requests() > refused;
                    EXPECT_EQ(status, isRefused ? dft::DFT_NO_MEMORY : dft::DFT_OK) << "request " << refused;
                }
                EXPECT_GT(refused, 0);
                allocator.Refuse(-1);
                EXPECT_EQ(allocator.Live(), live);
            }
        }
    }
}

} // namespace
