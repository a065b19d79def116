// The drivers: where the elements of a job lie, which routine is called on which line, and what comes of its status.
#include "dft/DriverFixture.h"

#include "common/VectorClassTest.h"
#include "dft/TestSurroundings.h"

namespace {

using dft::DftDescriptor;
using dft::Direction;

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
    {"two columns", {1100, 2}, {}, {}},
    {"large plane", {128, 256}, {}, {}},
    {"few planes", {2, 40, 30}, {}, {}},
    {"narrow planes", {40, 30, 2}, {}, {}},
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

constexpr std::int32_t kPlacements[] = {dft::DFT_INPLACE, dft::DFT_NOT_INPLACE};

// The scale factor of record k.
double Scale(int k, Direction direction) {
    constexpr double scales[2][3] = {{0.5, 1, 3}, {1, 0.25, 1.25}};
    return scales[direction][k % 3];
}

template <typename Real>
struct LaidOutJob : TestJob<Real> {
    using Elements = typename TestJob<Real>::Elements;

    LaidOutJob(const Layout& wanted, std::int32_t placement)
        : TestJob<Real>(wanted.lengths, placement), layout(wanted),
          x(dft_slow::RandomLine<dft::Complex<Real>>(wanted.AllElements(), 3)) {
        for (int k = 0; k < this->handle->rank; ++k) {
            SetScales<Real>(this->handle[k], Scale(k, dft::kForward), Scale(k, dft::kBackward));
        }
        layout.Apply(*this);
    }

    Elements RunGuarded(Direction direction, int threads, std::int32_t status = dft::DFT_OK) const {
        const Place& results = this->handle->placement == dft::DFT_INPLACE ? layout.input : layout.output;
        // Within an element, and within a cache line: groups of lines begin differently.
        Arrays<dft::Complex<Real>> arrays(layout.Positions(layout.input), x, layout.Positions(results), *this,
                                          threads == 2 || layout.transforms % 2 == 0 ? 3 * sizeof(x[0]) : sizeof(Real));
        EXPECT_EQ(RunDriver(*this, direction, threads, arrays.input(), arrays.output()), status);
        return arrays.Result();
    }

    Layout layout;
    Elements x;
};

/// Every transform of the layout by the definition, scale factors included.
dft_slow::WideLine Definition(const Layout& layout, Direction direction) {
    const auto x = dft_slow::RandomLine<dft::Complex<double>>(layout.AllElements(), 3);
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

// Every road of one direction and placement; returns what they all give.
template <typename Real>
std::vector<dft::Complex<Real>> CheckRoads(const Layout& layout, Direction direction, std::int32_t placement) {
    SCOPED_TRACE(::testing::Message() << layout << ", direction " << direction << ", placement " << placement << ", "
                                      << sizeof(Real) << " bytes");
    const LaidOutJob<Real> job(layout, placement);
    const auto serial = job.RunGuarded(direction, 1);
    for (const int threads : {2, 5}) {
        EXPECT_TRUE(job.SameBytes(job.RunGuarded(direction, threads), serial)) << threads << " threads";
        const EngineThreads engine(threads - 1); // 1 and 4
        EXPECT_TRUE(job.SameBytes(job.RunGuarded(direction, 0), serial)) << threads - 1 << " threads of the engine";
    }
    const Watch<Real> watch(job, direction);
    EXPECT_TRUE(job.SameBytes(job.RunGuarded(direction, 1), serial)) << "line by line";
    for (int k = 0; k < job->rank; ++k) {
        const int length = job.handle[k].length;
        const auto lines = static_cast<int>(serial.size()) / length;
        EXPECT_EQ(watch.Calls(k), k == 0 || length > 1 ? lines : 0) << "record " << k;
    }
    EXPECT_TRUE(job.SameBytes(job.RunGuarded(direction, 3), serial)) << "line by line, 3 threads";
    return serial;
}

template <typename Real>
void CheckLayout(const Layout& layout, Direction direction, const dft_slow::WideLine& wide) {
    const double tolerance = sizeof(Real) == sizeof(float) ? 1e-6 : 1e-14; // some ten roundings of an element
    for (const std::int32_t placement : kPlacements) {
        EXPECT_LT(dft_slow::RelativeError(CheckRoads<Real>(layout, direction, placement), wide), tolerance) << layout;
    }
}

class DriverTest : public VectorClassTest {};

TEST_P(DriverTest, EveryLayoutOnEveryRoad) {
    for (const Layout& layout : kLayouts) {
        for (const Direction direction : {dft::kForward, dft::kBackward}) {
            const dft_slow::WideLine wide = Definition(layout, direction);
            CheckLayout<float>(layout, direction, wide);
            CheckLayout<double>(layout, direction, wide);
        }
    }
}

// What lines give together is what they give one by one, and the same in the other class.
template <typename Real>
void CheckLineByLine(const Layout& layout, Direction direction, simd::VectorClass other) {
    SCOPED_TRACE(::testing::Message() << layout << ", " << layout.transforms << " transforms, direction " << direction
                                      << ", " << sizeof(Real) << " bytes");
    const simd::VectorClass tested = simd::ActiveVectorClass();
    const LaidOutJob<Real> job(layout, dft::DFT_INPLACE);
    const auto together = job.RunGuarded(direction, 1);
    simd::ForceVectorClass(other);
    EXPECT_TRUE(job.SameBytes(job.RunGuarded(direction, 1), together)) << "class " << simd::Name(other);
    simd::ForceVectorClass(tested);
    const Watch<Real> watch(job, direction);
    EXPECT_TRUE(job.SameBytes(job.RunGuarded(direction, 1), together)) << "line by line";
}

// The width and the height go through every method, and the number of lines leaves every remainder of a batch.
const Lengths kPlanes[] = {{1, 60},   {60, 1},   {2, 3},    {5, 17},  {17, 34},  {33, 20},  {18, 151}, {151, 19},
                           {16, 64},  {64, 22},  {29, 149}, {8, 302}, {3, 1124}, {7, 2100}, {2100, 6}, {4, 4096},
                           {1024, 5}, {66, 128}, {96, 24},  {31, 2},  {512, 15}, {14, 8192}};

TEST_P(DriverTest, PlanesHaveTheBytesOfTheirLinesInEveryClass) {
    // The x87 unit rounds in its own way.
    const bool isX87 = sizeof(void*) == 4 && GetParam() == simd::VectorClass::Portable;
    const simd::VectorClass other = isX87 ? GetParam() : simd::VectorClass::SSE2;
    for (const Lengths& plane : kPlanes) {
        for (const Direction direction : {dft::kForward, dft::kBackward}) {
            CheckLineByLine<float>({"plane", plane, {}, {}}, direction, other);
            CheckLineByLine<double>({"plane", plane, {}, {}}, direction, other);
        }
    }
}

// Lines on their way into batches and back: all numbers of lines and all lengths around the sides of the squares that
// are turned, which are 1 to 8 elements long, and around the rows fetched ahead; powers of two where they lie.
TEST_P(DriverTest, LinesOfEveryShape) {
    struct Shape {
        const char* name;
        int stride, distance; ///< distance 0: as the length asks
    };
    constexpr Shape kShapes[] = {
        {"columns", 37, 1},       {"upward columns", -37, 1},   {"columns in cache lines", 40, 1},
        {"rows", 1, 71},          {"upward rows", 1, -71},      {"upward columns in cache lines", -40, 1},
        {"strided rows", 2, 150}, {"strided columns", 80, 2},   {"backward rows", -1, 71},
        {"long rows", 1, 258},    {"one after the other", 1, 0}};
    for (const Shape& shape : kShapes) {
        for (const int length :
             {1, 2, 3, 4, 5, 6, 7, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 20, 32, 33, 36, 64, 71, 256}) {
            for (int lines = 2; lines <= 33; lines += lines < 18 ? 1 : 5) {
                const int distance = shape.distance == 0 ? length : shape.distance;
                const int start =
                    lines % 5 + std::max(0, -shape.stride * (length - 1)) + std::max(0, -distance * (lines - 1));
                const Layout layout = {shape.name, {length}, {{shape.stride}, start, distance}, {}, lines};
                const Direction direction = lines % 2 == 0 ? dft::kForward : dft::kBackward; // scaled and not
                CheckLineByLine<float>(layout, direction, GetParam());
                CheckLineByLine<double>(layout, direction, GetParam());
            }
        }
    }
}

// Transforms that lie on one another are done one after the other.
TEST_P(DriverTest, OverlappingTransformsAreDoneInOrder) {
    for (const int distance : {0, 1}) {
        const LaidOutJob<float> one({"", {20}, {}, {}}, dft::DFT_INPLACE);
        const LaidOutJob<float> three({"", {20}, {{}, 0, distance}, {}, 3}, dft::DFT_INPLACE);
        auto expected = dft_slow::RandomLine<dft::Complex<float>>(22, 1);
        auto data = expected;
        for (int t = 0; t < 3; ++t) {
            ASSERT_EQ(dft::RunSerial(one.handle, dft::kForward, expected.data() + t * distance), dft::DFT_OK);
        }
        ASSERT_EQ(dft::RunSerial(three.handle, dft::kForward, data.data()), dft::DFT_OK);
        EXPECT_TRUE(one.SameBytes(data, expected)) << "distance " << distance;
    }
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(DriverTest);

// A refused call ends its pass, but for columns of a last group of less than four, whose statuses are not looked at.
TEST(Driver, StatusOfTheLastColumnsIsNotTested) {
    struct Row {
        Layout layout;
        int threads;
        int record, call; ///< that fails
        int status;
        int calls[3];
    };
    const Row rows[] = {
        {{"row", {6, 9}, {}, {}}, 1, 0, 2, 7, {3, 0}},
        {{"last row", {6, 9}, {}, {}}, 1, 0, 5, 7, {6, 0}},
        {{"strided row", {6, 9}, {{20, 2}}, {}}, 1, 0, 2, 7, {3, 0}},
        {{"column of a four", {6, 9}, {}, {}}, 1, 1, 5, 7, {6, 6}},
        {{"last column of a four", {6, 9}, {}, {}}, 1, 1, 7, 7, {6, 8}},
        {{"column behind the fours", {6, 9}, {}, {}}, 1, 1, 8, 0, {6, 9}},
        {{"one of three columns", {6, 3}, {}, {}}, 1, 1, 0, 0, {6, 3}},
        {{"no columns behind the fours", {6, 8}, {}, {}}, 1, 1, 7, 7, {6, 8}},
        {{"strided column", {6, 9}, {{20, 2}}, {}}, 1, 1, 8, 7, {6, 9}},
        {{"along the third record", {3, 2, 5}, {}, {}}, 1, 2, 2, 7, {6, 15, 3}},
        {{"behind its fours", {3, 2, 5}, {}, {}}, 1, 2, 4, 0, {6, 15, 10}},
        {{"one of several lines", {9}, {{}, 0, 9}, {}, 7}, 1, 0, 4, 7, {5}},
        {{"first row of each thread", {60, 40}, {}, {}}, 2, 0, 0, 7, {31, 0}},
        {{"first column of a thread", {60, 40}, {}, {}}, 2, 1, 0, 7, {60, 21}},
        {{"plane of a thread", {3, 6, 9}, {}, {}}, 3, 0, 17, 7, {18, -1, 0}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.layout);
        const LaidOutJob<double> job(row.layout, dft::DFT_INPLACE);
        const Watch<double> watch(job, dft::kForward, row.record, row.call);
        job.RunGuarded(dft::kForward, row.threads, row.status);
        for (int k = 0; k < job->rank; ++k) {
            EXPECT_TRUE(row.calls[k] < 0 || row.calls[k] == watch.Calls(k)) << watch.Calls(k) << " of record " << k;
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
        const LaidOutJob<float> job(layout, dft::DFT_INPLACE);
        const Watch<float> watch(job, dft::kForward);
        job.RunGuarded(dft::kForward, 3);
        EXPECT_EQ(watch.WasInRegion(), row.isInRegion) << layout;
    }
}

std::atomic<int> s_ThreadsOfLine;
std::int32_t RecordThreads(void*, std::int32_t threads, DftDescriptor*) {
    s_ThreadsOfLine = threads;
    return dft::DFT_KERNEL_FAILURE;
}

// Long powers of two in one line go to the threaded routine of the record, by the limits of the variant.
template <typename Real>
void CheckThreadsOfLine(std::int32_t placement, int length, int expected) {
    const Layout layout = {"", {length}, {{2}}, {{3}}}; // other strides than 1 stay on that road out of place
    const LaidOutJob<Real> job(layout, placement);
    job->c1d_forw_dft = job->z1d_forw_dft = RecordThreads;
    s_ThreadsOfLine = 0;
    job.RunGuarded(dft::kForward, 5, expected > 0 ? dft::DFT_KERNEL_FAILURE : dft::DFT_OK);
    EXPECT_EQ(s_ThreadsOfLine, expected) << sizeof(Real) << " bytes";
}

TEST(Driver, ThreadsOfALineByVariant) {
    struct Row {
        std::int32_t variant, placement;
        int length, single, twice; ///< threads of five; 0: serial
    };
    const Row rows[] = {
        {2, 43, 1024, 0, 0}, {2, 43, 2048, 0, 2}, {2, 43, 4096, 0, 5}, {2, 43, 8192, 5, 5},  {3, 44, 8192, 5, 5},
        {1, 43, 512, 0, 0},  {1, 43, 1024, 0, 2}, {1, 43, 2048, 5, 5}, {1, 44, 2048, 2, 5},  {1, 44, 4096, 5, 5},
        {0, 44, 2048, 2, 5}, {0, 43, 1024, 0, 2}, {1, 43, 3000, 0, 0}, {2, 44, 10000, 0, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(::testing::Message()
                     << "variant " << row.variant << ", placement " << row.placement << ", length " << row.length);
        const TestNumber inForce(dft::dft_variant_code, row.variant);
        CheckThreadsOfLine<float>(row.placement, row.length, row.single);
        CheckThreadsOfLine<double>(row.placement, row.length, row.twice);
    }
}

} // namespace
