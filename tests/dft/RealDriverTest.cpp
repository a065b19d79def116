// Real jobs of several lines at any strides, against the same lines one by one at stride 1.
#include "dft/DriverFixture.h"

namespace {

using dft::Direction;

struct Row {
    std::int32_t format;
    Layout layout;

    int Length() const { return layout.lengths[0]; }
    int Packed() const { return format == dft::DFT_PACK_FULL ? Length() + 2 - Length() % 2 : Length(); }
    int Inputs(Direction direction) const { return direction == dft::kForward ? Length() : Packed(); }
    int Outputs(Direction direction, bool isInPlace) const {
        const bool clearsNext = isInPlace && format == dft::DFT_PACK_FULL;
        return direction == dft::kForward ? Packed() : Length() + (clearsNext ? 1 : 0);
    }
};
const Row kRows[] = {
    {54, {"", {6}, {{1}, 0, 8}, {{1}, 2, 8}, 3}},    {54, {"", {7}, {{1}, 1, 8}, {{2}, 0, 16}, 4}},
    {55, {"", {6}, {{3}, 2, 20}, {{1}, 0, 6}, 5}},   {54, {"", {30}, {{2}, 3, 0}, {{3}, 1, 0}}},
    {54, {"", {15}, {{2}, 0, 40}, {{2}, 1, 50}, 2}}, {56, {"", {16}, {{4}, 0, 1}, {{3}, 2, 1}, 3}},
    {54, {"", {16}, {{2}, 0, 37}, {{1}, 0, 18}, 2}}, {55, {"", {181}, {{1}, 1, 0}, {{2}, 0, 0}}},
    {54, {"", {3}, {{1}, 0, 4}, {{1}, 0, 5}, 6}},    {54, {"", {30}, {{}, 3, 0}, {{}, 1, 0}}},
    {56, {"", {6}, {{}, 3, 6}, {{}, 5, 6}, 3}},
};

template <typename Real>
struct RealJob : Job {
    RealJob(const Row& row, const Layout& layout, bool isInPlace)
        : Job(kPrecisionOf<Real>, dft::DFT_REAL, layout.lengths, isInPlace ? dft::DFT_INPLACE : dft::DFT_NOT_INPLACE) {
        handle->packed_format = row.format;
        SetScales<Real>(*handle, 1, 0.5);
        layout.Apply(*this);
    }
};

template <typename Real>
void Check(const Row& row, Direction direction, bool isInPlace) {
    SCOPED_TRACE(::testing::Message() << row.layout << ", format " << row.format << ", direction " << direction
                                      << (isInPlace ? ", in place" : "") << ", " << sizeof(Real) << " bytes");
    Layout inputs = row.layout;
    inputs.lengths[0] = row.Inputs(direction);
    Layout results = row.layout;
    results.lengths[0] = row.Outputs(direction, isInPlace);
    std::vector<Real> x;
    for (const auto& element : dft_slow::RandomLine<dft::Complex<Real>>(inputs.AllElements(), 4)) {
        x.push_back(element.re);
    }
    std::vector<Real> expected;
    const RealJob<Real> line(row, {"", row.layout.lengths, {}, {}}, isInPlace);
    for (auto start = x.begin(); start != x.end(); start += inputs.lengths[0]) {
        std::vector<Real> from(start, start + inputs.lengths[0]);
        from.resize(static_cast<std::size_t>(row.Length()) + 2);
        std::vector<Real> to(from.size());
        EXPECT_EQ(RunDriver(line, direction, 1, from.data(), to.data()), dft::DFT_OK);
        const std::vector<Real>& result = isInPlace ? from : to;
        expected.insert(expected.end(), result.begin(), result.begin() + results.lengths[0]);
    }
    const RealJob<Real> job(row, row.layout, isInPlace);
    for (const int threads : {0, 1, 2}) {
        Arrays<Real> arrays(inputs.Positions(row.layout.input), x,
                            results.Positions(isInPlace ? row.layout.input : row.layout.output), job, sizeof(Real));
        EXPECT_EQ(RunDriver(job, direction, threads, arrays.input(), arrays.output()), dft::DFT_OK);
        EXPECT_TRUE(SameBytes(expected.data(), arrays.Result().data(), expected.size())) << threads << " threads";
    }
}

TEST(RealDriver, EveryLayoutOnEveryRoad) {
    for (const Row& row : kRows) {
        for (const Direction direction : {dft::kForward, dft::kBackward}) {
            for (const bool isInPlace : {true, false}) {
                Check<float>(row, direction, isInPlace);
                Check<double>(row, direction, isInPlace);
            }
        }
    }
}

// Three threads from 2 << 3 elements on, and only for several transforms.
TEST(RealDriver, RegionsFromALimitOfElements) {
    struct Limit {
        int length, transforms;
        bool isInRegion;
    };
    for (const Limit& limit : {Limit{5, 3, false}, {8, 2, true}, {4, 4, true}, {1000, 1, false}, {4, 0, false}}) {
        const RealJob<float> job({56, {}}, {"", {limit.length}, {{}, 0, limit.length}, {}, limit.transforms}, true);
        const Watch<float> watch(job, dft::kForward);
        std::vector<float> data(1000);
        EXPECT_EQ(RunDriver(job, dft::kForward, 3, data.data(), data.data()), dft::DFT_OK);
        EXPECT_EQ(watch.Calls(0), limit.transforms);
        EXPECT_EQ(watch.WasInRegion(), limit.isInRegion) << limit.length << " x " << limit.transforms;
    }
}

} // namespace
