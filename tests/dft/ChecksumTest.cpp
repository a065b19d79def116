// Checksums of results, so that a change of the engine's structure can be told from a change of its bytes: over
// lengths, ranks, strides, precisions, placements, directions, orderings, packed formats and variants, in every vector
// class, on one thread and on several. They were taken on x86-64 with the C library of Debian 12, whose sines the
// tables hold; a change that is meant to alter last digits takes them anew.
#include "common/VectorClassTest.h"
#include "dft/DriverFixture.h"

#include <iomanip>
#include <sstream>

#if defined(__x86_64__)

namespace {

/// The hash of Fowler, Noll and Vo, FNV-1a, with 64 bits, continued from `sum`.
template <typename Element>
std::uint64_t Hashed(std::uint64_t sum, const std::vector<Element>& elements) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(elements.data());
    for (std::size_t k = 0; k < elements.size() * sizeof(Element); ++k) {
        sum = (sum ^ bytes[k]) * 0x100000001b3u;
    }
    return sum;
}

std::string Text(std::uint64_t sum) {
    std::ostringstream text;
    text << std::hex << std::setw(16) << std::setfill('0') << sum;
    return text.str();
}

/// What a group of jobs has in common.
struct Group {
    const char* name;
    std::int32_t domain = dft::DFT_COMPLEX;
    std::int32_t ordering = dft::DFT_ORDERED;
    std::int32_t format = dft::DFT_PACK_FULL;
    bool scaled = false;
    std::vector<Layout> layouts = {};
    const char* sums[2] = {}; ///< single and double precision
};

std::vector<Layout> Lines(int first, int last, int step) {
    std::vector<Layout> layouts;
    for (int n = first; n <= last; n += step) {
        layouts.push_back({"line", {n}, {}, {}});
    }
    return layouts;
}

std::vector<Layout> PowersOfTwo() {
    std::vector<Layout> layouts;
    for (int bits = 0; bits <= 17; ++bits) {
        layouts.push_back({"power of two", {1 << bits}, {}, {}});
    }
    return layouts;
}

const std::vector<Layout> kAwkwardLines = {{"prime", {2003}, {}, {}},
                                           {"square of a prime", {151 * 151}, {}, {}},
                                           {"primes and twos", {8 * 3 * 5 * 7 * 11 * 13}, {}, {}},
                                           {"large primes", {2 * 149 * 131}, {}, {}},
                                           {"many stages", {3 * 3 * 3 * 3 * 3 * 3 * 3 * 3 * 5}, {}, {}}};

/// Elements that reach as far as either side of a job.
std::size_t RoomFor(const Layout& layout) {
    std::vector<std::size_t> all = layout.Positions(layout.input);
    const std::vector<std::size_t> outputs = layout.Positions(layout.output);
    all.insert(all.end(), outputs.begin(), outputs.end());
    return *std::max_element(all.begin(), all.end()) + 1;
}

/// Of all jobs of a group in one variant and precision, both placements and directions.
template <typename Real>
std::string SumOf(const Group& group, int threads) {
    using Element = dft::Complex<Real>;
    std::uint64_t sum = 0xcbf29ce484222325u;
    for (const Layout& layout : group.layouts) {
        for (const std::int32_t placement : kPlacements) {
            const bool isReal = group.domain == dft::DFT_REAL;
            const Job job(kPrecisionOf<Real>, group.domain, layout.lengths, placement);
            job->ordering = group.ordering;
            job->packed_format = group.format;
            if (group.scaled) {
                SetScales<Real>(*job.handle, 0.3, 0.7);
            }
            layout.LayOutAndCommit(job);
            const auto x = dft_slow::RandomLine<Element>(isReal ? layout.AllElements() / 2 + 2 : RoomFor(layout), 7);
            for (const int sign : kSigns) {
                std::vector<Element> input = x;
                std::vector<Element> output(x.size());
                const EngineThreads fork(threads);
                EXPECT_EQ(job.Compute(sign, input.data(), output.data()), dft::DFT_OK) << layout;
                sum = Hashed(Hashed(sum, input), output);
            }
        }
    }
    return Text(sum);
}

class ChecksumTest : public VectorClassTest {};

TEST_P(ChecksumTest, OfTheDefaultVariant) {
    const TestNumber code(dft::dft_variant_code, 0);
    const Group groups[] = {
        {.name = "lines", .layouts = Lines(1, 700, 3), .sums = {"85e7494c45321adb", "30926e215815afcd"}},
        {.name = "scaled lines",
         .scaled = true,
         .layouts = Lines(1, 300, 7),
         .sums = {"1112b88e3e732771", "4a6b5c4b693aa11a"}},
        {.name = "awkward lines", .layouts = kAwkwardLines, .sums = {"f2c2c8b305a6c7d5", "617a7d6b3e4d2621"}},
        {.name = "powers of two", .layouts = PowersOfTwo(), .sums = {"52b0b2080e797c2a", "a77a496f539c638e"}},
        {.name = "powers of two, reversed",
         .ordering = 0,
         .scaled = true,
         .layouts = PowersOfTwo(),
         .sums = {"89055286718e14b2", "8aaabf403e0f5a51"}},
        {.name = "ranks and strides", .layouts = kStridedJobs, .sums = {"3f00edfae5ad0488", "9821657a583d687f"}},
        {.name = "real",
         .domain = dft::DFT_REAL,
         .layouts = Lines(1, 400, 3),
         .sums = {"b459ca975015f996", "05ef612f63f34515"}},
        {.name = "real, tight",
         .domain = dft::DFT_REAL,
         .format = dft::DFT_PACK_TIGHT,
         .layouts = Lines(1, 400, 7),
         .sums = {"8d75f5de738ff7b1", "27238c24470c3e9d"}},
        {.name = "real, native",
         .domain = dft::DFT_REAL,
         .format = dft::DFT_PACK_NATIVE,
         .scaled = true,
         .layouts = PowersOfTwo(),
         .sums = {"cbe002ce139a3bf1", "f013261bc4588559"}},
    };
    for (const Group& group : groups) {
        SCOPED_TRACE(group.name);
        EXPECT_EQ(SumOf<float>(group, 1), group.sums[0]);
        EXPECT_EQ(SumOf<double>(group, 1), group.sums[1]);
    }
}

// Double precision runs by one set of limits.
TEST_P(ChecksumTest, OfTheOtherVariants) {
    const char* const sums[] = {"286be7b766199f43", "77b9b6c87b4a4786", "77b9b6c87b4a4786"};
    for (int variant = 1; variant <= 3; ++variant) {
        SCOPED_TRACE(variant);
        const TestNumber code(dft::dft_variant_code, variant);
        EXPECT_EQ(SumOf<float>({.name = "", .scaled = true, .layouts = PowersOfTwo()}, 1), sums[variant - 1]);
    }
}

TEST_P(ChecksumTest, DoesNotHangOnThreads) {
    const TestNumber code(dft::dft_variant_code, 0);
    const Group group = {.name = "", .layouts = kStridedJobs};
    EXPECT_EQ(SumOf<float>(group, 3), SumOf<float>(group, 1));
    EXPECT_EQ(SumOf<double>(group, 2), SumOf<double>(group, 1));
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(ChecksumTest);

} // namespace

#endif
