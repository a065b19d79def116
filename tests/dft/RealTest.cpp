// Real transforms: every method, layout, placement and precision against the definition.
#include "dft/DriverFixture.h"

#include <cmath>
#include <limits>

namespace {

using namespace dft;

constexpr DftCode kFormats[] = {DFT_PACK_FULL, DFT_PACK_TIGHT, DFT_PACK_NATIVE};
constexpr double kNotLooked = std::numeric_limits<double>::quiet_NaN();

/// With room for any packed format.
std::vector<Layout> TestedLayouts() {
    std::vector<Layout> layouts = {
        {"", {6}, {{1}, 0, 8}, {{1}, 2, 8}, 3},    {"", {7}, {{1}, 1, 8}, {{2}, 0, 16}, 4},
        {"", {6}, {{3}, 2, 26}, {{1}, 0, 8}, 5},   {"", {30}, {{2}, 3, 0}, {{3}, 1, 0}},
        {"", {15}, {{2}, 0, 40}, {{2}, 1, 50}, 2}, {"", {16}, {{4}, 0, 1}, {{3}, 2, 1}, 3},
        {"", {16}, {{2}, 0, 37}, {{1}, 0, 18}, 2}, {"", {181}, {{1}, 1, 0}, {{2}, 0, 0}},
        {"", {3}, {{1}, 0, 4}, {{1}, 0, 5}, 6},    {"", {30}, {{}, 3, 0}, {{}, 1, 0}},
        {"", {6}, {{}, 3, 8}, {{}, 5, 8}, 3},
    };
    Lengths lengths(40);
    std::iota(lengths.begin(), lengths.end(), 1);
    lengths.insert(lengths.end(), {179, 180, 181, 302, 360, 362, 512, 1001, 1024, 4099});
    for (const int length : lengths) {
        layouts.push_back({"", {length}, {}, {}});
    }
    return layouts;
}

/// Real elements and the spectra of their lines.
struct Lines {
    std::vector<std::vector<std::complex<float>>> elements;
    std::vector<dft_slow::WideLine> spectra;

    explicit Lines(const Layout& layout) {
        for (int t = 0; t < layout.transforms; ++t) {
            elements.push_back(dft_slow::RandomLine<std::complex<float>>(layout.Elements(), static_cast<unsigned>(t)));
            for (auto& element : elements.back()) {
                element.imag(0);
            }
            spectra.push_back(dft_slow::Transform(elements.back(), -1));
        }
    }
};

template <typename Real>
void CheckRun(const Layout& layout, const Lines& lines, DftCode format, DftCode placement, double scale, int sign) {
    SCOPED_TRACE(::testing::Message() << layout << ", format " << format << ", placement " << placement << ", scale "
                                      << scale << ", sign " << sign << ", " << sizeof(Real) << " bytes");
    const bool isInPlace = placement == DFT_INPLACE;
    std::vector<Real> input;
    std::vector<Real> expected;
    const auto append = [](std::vector<Real>& side, const std::vector<Real>& transform) {
        side.insert(side.end(), transform.begin(), transform.end());
    };
    for (std::size_t t = 0; t < lines.elements.size(); ++t) {
        std::vector<Real> line;
        std::vector<Real> restored;
        for (const auto& element : lines.elements[t]) {
            line.push_back(element.real());
            restored.push_back(static_cast<Real>(element.real() * scale * layout.lengths[0]));
        }
        if (sign > 0 && isInPlace && format == DFT_PACK_FULL) {
            restored.push_back(0); // the element behind the line is cleared
        }
        const std::vector<Real> packed =
            Packed<Real>(format, lines.spectra[t], sign < 0 ? scale : 1, sign < 0 ? 0 * scale : kNotLooked);
        append(input, sign < 0 ? std::as_const(line) : packed);
        append(expected, sign < 0 ? packed : std::as_const(restored));
    }
    const Job job(kPrecisionOf<Real>, DFT_REAL, layout.lengths, placement);
    job->packed_format = format;
    SetScales<Real>(*job.handle, sign < 0 ? scale : 7, sign < 0 ? 7 : scale);
    layout.LayOutAndCommit(job);
    const auto positions = [&](const std::vector<Real>& side, const Place& place) {
        Layout sized = layout;
        sized.lengths[0] = static_cast<int>(side.size()) / layout.transforms;
        return sized.Positions(place);
    };
    for (const int threads : {1, 2}) {
        const EngineThreads engine(threads);
        const std::vector<Real> result = ResultsBetweenGuards(
            positions(input, layout.input), input, positions(expected, isInPlace ? layout.input : layout.output),
            isInPlace, sizeof(Real), [&](Real* from, Real* to) { EXPECT_EQ(job.Compute(sign, from, to), DFT_OK); });
        double difference = 0;
        double norm = 0;
        for (std::size_t k = 0; k < result.size(); ++k) {
            const bool isZero = expected[k] == 0;
            EXPECT_TRUE(!isZero || (result[k] == 0 && std::signbit(result[k]) == std::signbit(expected[k])))
                << "at " << k;
            difference = std::hypot(difference, result[k] - expected[k]);
            norm = std::hypot(norm, expected[k]);
        }
        // The worst rows, the direct method of 179 elements, come to 1.8 epsilon in either precision.
        EXPECT_LE(difference, 4 * norm * std::numeric_limits<Real>::epsilon()) << threads << " threads";
    }
}

TEST(RealTransform, EqualsTheDefinitionInEveryLayout) {
    for (const Layout& layout : TestedLayouts()) {
        const Lines lines(layout);
        for (const DftCode format : kFormats) {
            for (const DftCode placement : {DFT_INPLACE, DFT_NOT_INPLACE}) {
                for (const double scale : {1.0, -0.75}) {
                    for (const int sign : kSigns) {
                        CheckRun<float>(layout, lines, format, placement, scale, sign);
                        CheckRun<double>(layout, lines, format, placement, scale, sign);
                    }
                }
            }
        }
    }
}

} // namespace
