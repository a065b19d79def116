// The drivers: where the elements of a job lie, which routine is called on which line, and what comes of its status.
#include "dft/DriverFixture.h"

#include "common/VectorClassTest.h"

namespace {

using dft::DftDescriptor;

// The width and the height go through every method, and the number of lines leaves every remainder of a batch.
const Lengths kPlanes[] = {{1, 60},   {60, 1},   {2, 3},    {5, 17},  {17, 34},  {33, 20},  {18, 151}, {151, 19},
                           {16, 64},  {64, 22},  {29, 149}, {8, 302}, {3, 1124}, {7, 2100}, {2100, 6}, {4, 4096},
                           {1024, 5}, {66, 128}, {96, 24},  {31, 2},  {512, 15}, {14, 8192}};

// Lines below, at and above the lanes of a batch; several lines only where they share no element.
const std::vector<Layout> kOtherJobs = {
    {"one line", {100}, {{}, 4}, {{}, 1}},
    {"long power of two", {8192}, {{1}, 3}, {{2}, 0}},
    {"lines to rows", {34}, {{20}, 1, 1}, {{1}, 0, 35}, 20},
    {"entangled lines", {9}, {{6}, 0, 2}, {{2}, 30, 1}, 2},
    {"backward lines", {21}, {{-2}, 45, 60}, {{1}, 90, -30}, 4},
    {"single element", {1}, {{}, 1, 2}, {{}, 0, 1}, 3},
    {"strided rows", {9, 18}, {{40, 2}, 1}, {{36, 2}, 0}},
    {"five columns", {6, 5}, {{6, 1}, 1}, {}},
    {"one column", {60, 1}, {{2, 1}, 1}, {}},
    {"one row", {1, 60}, {{90, 1}, 1}, {}},
    {"one element", {1, 1}, {{}, 2}, {}},
    {"powers of two at strides", {64, 33}, {{40, 1}, 0}, {{33, 1}, 5}},
    {"few planes", {2, 40, 30}, {}, {}},
    {"narrow planes", {40, 30, 2}, {}, {}},
    {"fewer rows than threads", {3, 700}, {{701, 1}, 0}, {}},
    {"long column", {2100, 1}, {}, {}},
    {"wide volume", {4, 7, 9}, {{90, 10, 1}, 4}, {{1, 4, 28}, 0}},
    {"flat volume", {3, 1, 20}, {}, {{21, 99, 1}, 0}},
    {"thin volume", {4, 5, 1}, {{6, 1, 40}, 0}, {}},
    {"volumes", {2, 3, 16}, {{}, 1, 100}, {{60, 18, 1}, 0, 120}, 3},
    {"four dimensions", {3, 2, 5, 8}, {{100, 45, 9, 1}, 0}, {}},
    {"other strides in seven dimensions", {2, 3, 1, 2, 3, 2, 5}, {}, {{1, 2, 6, 6, 12, 36, 72}, 0}},
};

// The scale factor of record k.
double Scale(int k, int sign) {
    constexpr double forward[] = {0.5, 1, 3};
    constexpr double backward[] = {1, 0.25, 1.25};
    return (sign < 0 ? forward : backward)[k % 3];
}

template <typename Real>
struct LaidOutJob : TestJob<Real> {
    using Elements = typename TestJob<Real>::Elements;

    LaidOutJob(const Layout& wanted, std::int32_t placement, std::int32_t ordering = dft::DFT_ORDERED)
        : TestJob<Real>(wanted.lengths, placement), layout(wanted),
          x(dft_slow::RandomLine<dft::Complex<Real>>(wanted.AllElements(), 3)) {
        this->handle->ordering = ordering;
        for (int k = 0; k < this->handle->rank; ++k) {
            SetScales<Real>(this->handle[k], Scale(k, -1), Scale(k, 1));
        }
        layout.LayOutAndCommit(*this);
    }

    Elements RunGuarded(int sign, int threads, std::int32_t status = dft::DFT_OK) const {
        const bool isInPlace = this->handle->placement == dft::DFT_INPLACE;
        const EngineThreads engine(threads);
        // Within an element, and within a cache line: groups of lines begin differently.
        return ResultsBetweenGuards(
            layout.Positions(layout.input), x, layout.Positions(isInPlace ? layout.input : layout.output), isInPlace,
            threads == 2 || layout.transforms % 2 == 0 ? 3 * sizeof(x[0]) : sizeof(Real),
            [&](auto* input, auto* output) { EXPECT_EQ(this->Compute(sign, input, output), status); });
    }

    Layout layout;
    Elements x;
};

/// Every transform of the layout by the definition, scale factors included.
dft_slow::WideLine Definition(const Layout& layout, int sign) {
    const auto x = dft_slow::RandomLine<dft::Complex<double>>(layout.AllElements(), 3);
    double scale = 1;
    const int rank = static_cast<int>(layout.lengths.size());
    for (int k = 0; k < rank; ++k) {
        const bool runs = k == 0 || layout.lengths[static_cast<std::size_t>(rank - 1 - k)] > 1;
        scale *= runs ? Scale(k, sign) : 1;
    }
    dft_slow::WideLine all;
    for (auto start = x.begin(); start != x.end(); start += static_cast<std::ptrdiff_t>(layout.Elements())) {
        const std::vector<dft::Complex<double>> one(start, start + static_cast<std::ptrdiff_t>(layout.Elements()));
        for (const auto& value : dft_slow::TransformNd(one, layout.lengths, sign)) {
            all.push_back(value * static_cast<long double>(scale));
        }
    }
    return all;
}

// What lines give together, alone and on threads, they give one by one.
template <typename Real>
std::vector<dft::Complex<Real>> CheckLineByLine(const LaidOutJob<Real>& job, int sign,
                                                const std::vector<int>& threadCounts) {
    SCOPED_TRACE(::testing::Message() << job.layout << ", sign " << sign << ", placement " << job->placement
                                      << ", ordering " << job->ordering << ", " << sizeof(Real) << " bytes");
    const auto serial = job.RunGuarded(sign, 1);
    for (const int threads : threadCounts) {
        EXPECT_TRUE(AreSame(job.RunGuarded(sign, threads), serial)) << threads << " threads";
    }
    const Watch<Real> watch(job, sign);
    EXPECT_TRUE(AreSame(job.RunGuarded(sign, 1), serial)) << "line by line";
    for (int k = 0; k < job->rank; ++k) {
        const int length = job.handle[k].length;
        const auto lines = static_cast<int>(serial.size()) / length;
        EXPECT_EQ(watch.Calls(k), k == 0 || length > 1 ? lines : 0) << "record " << k;
    }
    if (!threadCounts.empty()) {
        EXPECT_TRUE(AreSame(job.RunGuarded(sign, 3), serial)) << "line by line, 3 threads";
    }
    return serial;
}

template <typename Real>
void CheckLayout(const Layout& layout, int sign, const dft_slow::WideLine& wide) {
    const double tolerance = sizeof(Real) == sizeof(float) ? 1e-6 : 1e-14; // some ten roundings of an element
    for (const std::int32_t placement : kPlacements) {
        const auto computed = CheckLineByLine<Real>({layout, placement}, sign, {2, 5});
        EXPECT_LT(dft_slow::RelativeError(computed, wide), tolerance) << layout << ", placement " << placement;
    }
}

class DriverTest : public VectorClassTest {};

TEST_P(DriverTest, EveryLayoutEqualsTheDefinitionAlsoOnThreadsAndLineByLine) {
    std::vector<Layout> layouts = kOtherJobs;
    layouts.insert(layouts.end(), kStridedJobs.begin(), kStridedJobs.end());
    for (const Lengths& plane : kPlanes) {
        layouts.push_back({"plane", plane, {}, {}});
    }
    for (const Layout& layout : layouts) {
        for (const int sign : kSigns) {
            const dft_slow::WideLine wide = Definition(layout, sign);
            CheckLayout<float>(layout, sign, wide);
            CheckLayout<double>(layout, sign, wide);
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
                const int sign = kSigns[lines % 2]; // scaled and not
                CheckLineByLine<float>({layout, dft::DFT_INPLACE}, sign, {});
                CheckLineByLine<double>({layout, dft::DFT_INPLACE}, sign, {});
            }
        }
    }
}

// Up to a length that each variant takes in groups of blocks, in either order of the spectrum.
TEST_P(DriverTest, PowersOfTwoBesideEachOther) {
    struct Row {
        int variant, firstBits, lastBits;
        bool isSingle;
    };
    const auto check = [](auto number, int bits, const Place& place) {
        using Real = decltype(number);
        constexpr int lines = 64 / sizeof(Real) + 1;
        for (const std::int32_t ordering : kOrderings) {
            const LaidOutJob<Real> job({"", {1 << bits}, place, {}, lines}, dft::DFT_INPLACE, ordering);
            if (ordering == dft::DFT_ORDERED) { // columns stay where they lie
                SetScales<Real>(*job.handle, 1, 1);
            }
            for (const int sign : kSigns) {
                CheckLineByLine<Real>(job, sign, {});
            }
        }
    };
    for (const Row& row : {Row{0, 0, 12, true},
                           {1, 0, 8, true},
                           {0, 15, 15, true},
                           {1, 16, 16, true},
                           {2, 15, 15, true},
                           {0, 0, 12, false},
                           {0, 14, 14, false}}) {
        const TestNumber code(dft::dft_variant_code, row.variant);
        for (int bits = row.firstBits; bits <= row.lastBits; ++bits) {
            for (const Place& place : {Place{{17}, 1, 1}, Place{{1}, 1, (1 << bits) + 2}}) {
                row.isSingle ? check(1.0f, bits, place) : check(1.0, bits, place);
            }
        }
    }
}

// Transforms that lie on one another are done one after the other.
TEST_P(DriverTest, OverlappingTransformsAreDoneInOrder) {
    const EngineThreads serial(1);
    for (const int distance : {0, 1, 19}) {
        const LaidOutJob<float> one({"", {20}, {}, {}}, dft::DFT_INPLACE);
        const LaidOutJob<float> three({"", {20}, {{}, 0, distance}, {}, 3}, dft::DFT_INPLACE);
        auto expected = dft_slow::RandomLine<dft::Complex<float>>(58, 1);
        auto data = expected;
        for (int t = 0; t < 3; ++t) {
            ASSERT_EQ(one.Compute(-1, expected.data() + t * distance, nullptr), dft::DFT_OK);
        }
        ASSERT_EQ(three.Compute(-1, data.data(), nullptr), dft::DFT_OK);
        EXPECT_TRUE(AreSame(data, expected)) << "distance " << distance;
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
        const Watch<double> watch(job, -1, row.record, row.call);
        job.RunGuarded(-1, row.threads, row.status);
        for (int k = 0; k < job->rank; ++k) {
            EXPECT_TRUE(row.calls[k] < 0 || row.calls[k] == watch.Calls(k)) << watch.Calls(k) << " of record " << k;
        }
    }
}

// Of three threads: planes from 2048 elements on; several real transforms from 2 << 3 elements on.
TEST(Driver, RegionsFromLimitsOfElements) {
    struct Row {
        std::int32_t domain;
        Lengths lengths;
        int transforms;
        bool isInRegion;
    };
    const Row rows[] = {
        {32, {23, 89}, 1, false}, {32, {64, 32}, 1, true}, {32, {2047, 1}, 1, false}, {32, {2048, 1}, 1, true},
        {32, {1, 2048}, 1, true}, {32, {6, 10}, 2, true},  {32, {20000}, 1, false},   {32, {20}, 2, true},
        {32, {2, 2, 2}, 1, true}, {33, {5}, 3, false},     {33, {8}, 2, true},        {33, {4}, 4, true},
        {33, {1000}, 1, false},   {33, {4}, 0, false},
    };
    const EngineThreads engine(3);
    for (const Row& row : rows) {
        Layout layout = {"", row.lengths, {}, {}, row.transforms};
        layout.input.distance = static_cast<int>(layout.Elements());
        const Job job(dft::DFT_SINGLE, row.domain, row.lengths);
        job->packed_format = dft::DFT_PACK_NATIVE;
        layout.LayOutAndCommit(job);
        const Watch<float> watch(job, -1);
        std::vector<dft::Complex<float>> data(20000);
        EXPECT_EQ(job.Compute(-1, data.data(), nullptr), dft::DFT_OK);
        EXPECT_EQ(watch.Calls(0), static_cast<int>(layout.AllElements()) / row.lengths.back()) << layout;
        EXPECT_EQ(watch.WasInRegion(), row.isInRegion) << layout;
    }
}

std::atomic<int> s_ThreadsOfLine;
std::int32_t RecordThreads(void*, std::int32_t threads, DftDescriptor*) {
    s_ThreadsOfLine = threads;
    return dft::DFT_KERNEL_FAILURE;
}

// Long powers of two in one line go to the threaded routine of the record, by the limits of the variant.
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
        const TestNumber inForce(dft::dft_variant_code, row.variant);
        const Layout layout = {"", {row.length}, {{2}}, {{3}}}; // other strides than 1 stay powers of two out of place
        const auto check = [&](const auto& job, int expected) {
            job->c1d_forw_dft = job->z1d_forw_dft = RecordThreads;
            s_ThreadsOfLine = 0;
            job.RunGuarded(-1, 5, expected > 0 ? dft::DFT_KERNEL_FAILURE : dft::DFT_OK);
            EXPECT_EQ(s_ThreadsOfLine, expected)
                << layout << ", variant " << row.variant << ", placement " << row.placement;
        };
        check(LaidOutJob<float>(layout, row.placement), row.single);
        check(LaidOutJob<double>(layout, row.placement), row.twice);
    }
}

} // namespace
