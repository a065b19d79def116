// Jobs of the DFT engine: records of every rank, layout and format against the definition, on every road; and records
// that are none, which are refused and touch nothing.
#include "common/ForcedVectorClass.h"
#include "dft/DriverFixture.h"
#include "fuzz/Input.h"

#include <climits>
#include <cstdint>
#include <limits>
#include <vector>

namespace {

constexpr int kMostElements = 3000;

/// A place for `transforms` arrays of these lengths in which no two elements meet: dimensions nested in any order, with
/// gaps, either way round.
Place DrawPlace(Input& input, const Lengths& lengths, int transforms) {
    Lengths sides = lengths;
    sides.push_back(transforms);
    std::vector<int> strides(sides.size());
    std::vector<std::size_t> left(sides.size());
    std::iota(left.begin(), left.end(), 0u);
    int extent = 1;
    int offset = input.Number(0, 5);
    while (!left.empty()) {
        // The last side is the fastest where nothing else is asked for.
        const auto back = static_cast<std::size_t>(input.Number(0, static_cast<int>(left.size()) - 1));
        const auto chosen = left.end() - 1 - static_cast<std::ptrdiff_t>(back);
        const std::size_t k = *chosen;
        left.erase(chosen);
        const int step = extent + (input.Flag() ? input.Number(0, 3) : 0);
        extent = step * sides[k];
        if (sides[k] > 1 && input.Number(0, 7) == 7) {
            offset += step * (sides[k] - 1);
            strides[k] = -step;
        } else {
            strides[k] = step;
        }
    }
    Place place{strides, offset, strides.back()};
    place.strides.pop_back();
    return place;
}

/// Elements of which most are of moderate size, as the tolerance wants them.
template <typename Real>
std::vector<Real> DrawNumbers(Input& input, std::size_t count) {
    std::vector<unsigned char> bytes(count + 1);
    input.Fill(bytes);
    std::vector<Real> numbers;
    for (std::size_t k = 0; k < count; ++k) {
        numbers.push_back(static_cast<Real>(static_cast<signed char>(bytes[k])) / 128);
    }
    return numbers;
}

template <typename Real>
double Tolerance() {
    return sizeof(Real) == sizeof(float) ? 3e-6 : 3e-14; // some thirty roundings of an element
}

/// The job on one thread, on several, and on as many as the engine takes; all give the same bytes, but for single lines
/// that more threads than blocks work on.
template <typename Element>
std::vector<Element> RunAllRoads(Input& input, const Job& job, int sign, const Layout& inputs, const Layout& results,
                                 const std::vector<Element>& x) {
    const std::size_t misalignment = alignof(Element) * static_cast<std::size_t>(input.Number(0, 15));
    const bool isInPlace = job->placement == dft::DFT_INPLACE;
    const Place& place = isInPlace ? results.input : results.output;
    const int oneShot = job->one_shot;
    std::vector<Element> serial;
    for (const int threads : {1, input.Number(2, 5), 0}) {
        const EngineThreads engine(threads == 0 ? omp_get_max_threads() : threads);
        job->one_shot = threads == 0 ? oneShot : 0;
        const auto result = ResultsBetweenGuards(
            inputs.Positions(inputs.input), x, results.Positions(place), isInPlace, misalignment,
            [&](Element* from, Element* to) { EXPECT_EQ(job.Compute(sign, from, to), dft::DFT_OK); });
        serial = serial.empty() ? result : serial;
        if constexpr (!std::is_floating_point_v<Element>) {
            if (job->rank == 1 && job->number_of_transforms == 1) {
                EXPECT_LE(dft_slow::RelativeError(result, dft_slow::ToWideLine(serial)),
                          2 * std::numeric_limits<decltype(Element::re)>::epsilon());
                continue;
            }
        }
        EXPECT_TRUE(SameBytes(serial.data(), result.data(), serial.size())) << threads << " threads";
    }
    return serial;
}

template <typename Real>
void ComplexJob(Input& input) {
    Layout layout;
    int room = kMostElements;
    for (int rank = input.Number(1, dft::kMaximumRank); rank > 0; --rank) {
        layout.lengths.push_back(input.Number(1, std::max(1, rank == 1 ? room : std::min(room, 64))));
        room /= layout.lengths.back();
    }
    if (layout.lengths.size() == 1 && input.Flag()) {
        layout.lengths[0] = 1 << input.Number(0, 14);
    }
    layout.transforms = input.Number(1, std::clamp(room, 1, 20));
    layout.input = DrawPlace(input, layout.lengths, layout.transforms);
    layout.output = DrawPlace(input, layout.lengths, layout.transforms);
    const bool isInPlace = input.Flag();
    const int sign = input.Flag() ? -1 : 1;
    const Job job(kPrecisionOf<Real>, dft::DFT_COMPLEX, layout.lengths,
                  isInPlace ? dft::DFT_INPLACE : dft::DFT_NOT_INPLACE);
    const double scale = input.Number(0, 3) / 2.0 + 0.5;
    SetScales<Real>(*job.handle, scale, scale);
    const bool isOrdered = input.Number(0, 3) < 3;
    job->ordering = isOrdered ? dft::DFT_ORDERED : input.Number(INT_MIN, INT_MAX);
    layout.LayOutAndCommit(job);

    std::vector<dft::Complex<Real>> x(layout.AllElements());
    const auto numbers = DrawNumbers<Real>(input, 2 * x.size());
    for (std::size_t k = 0; k < x.size(); ++k) {
        x[k] = {numbers[2 * k], numbers[2 * k + 1]};
    }
    const auto result = RunAllRoads(input, job, sign, layout, layout, x);
    for (int k = 0; k < layout.transforms && (isOrdered || job->ordering == dft::DFT_ORDERED); ++k) {
        const auto part = [&](const auto& all) {
            const auto start = all.begin() + k * static_cast<std::ptrdiff_t>(layout.Elements());
            return std::vector<dft::Complex<Real>>(start, start + static_cast<std::ptrdiff_t>(layout.Elements()));
        };
        auto expected = dft_slow::TransformNd(part(x), layout.lengths, sign);
        for (auto& value : expected) {
            value *= static_cast<long double>(scale);
        }
        EXPECT_LE(dft_slow::RelativeError(part(result), expected), Tolerance<Real>()) << layout;
    }
}

template <typename Real>
void RealJob(Input& input) {
    const int length = input.Flag() ? input.Number(1, kMostElements) : input.Number(1, 70);
    const int format = input.Number(dft::DFT_PACK_FULL, dft::DFT_PACK_NATIVE);
    const int packed = format == dft::DFT_PACK_FULL ? length + 2 - length % 2 : length;
    Layout layout{"", {length}, {}, {}, input.Number(1, std::clamp(kMostElements / length, 1, 20))};
    // Room for either side of the job.
    layout.input = DrawPlace(input, {length + 2}, layout.transforms);
    layout.output = DrawPlace(input, {length + 2}, layout.transforms);
    const bool isInPlace = input.Flag();
    const Job job(kPrecisionOf<Real>, dft::DFT_REAL, layout.lengths,
                  isInPlace ? dft::DFT_INPLACE : dft::DFT_NOT_INPLACE);
    job->packed_format = format;
    layout.LayOutAndCommit(job);

    Layout spectra = layout;
    spectra.lengths[0] = packed;
    const auto x = DrawNumbers<Real>(input, layout.AllElements());
    const auto result = RunAllRoads(input, job, -1, layout, spectra, x);
    dft_slow::WideLine restored;
    for (int k = 0; k < layout.transforms; ++k) {
        std::vector<dft::Complex<Real>> line;
        std::vector<dft::Complex<Real>> computed;
        for (int j = 0; j < length; ++j) {
            line.push_back({x[static_cast<std::size_t>(k * length + j)], 0});
        }
        for (int j = 0; j < packed; ++j) {
            computed.push_back({result[static_cast<std::size_t>(k * packed + j)], 0});
        }
        dft_slow::WideLine expected;
        for (const double part : Packed<double>(format, dft_slow::Transform(line, -1), 1, 0)) {
            expected.emplace_back(part);
        }
        EXPECT_LE(dft_slow::RelativeError(computed, expected), Tolerance<Real>()) << layout << ", format " << format;
        for (const auto& value : line) {
            restored.push_back(dft_slow::ToWide(value) * static_cast<long double>(length));
        }
    }
    // In place the full layout has the element after the line cleared.
    Layout lines = layout;
    lines.lengths[0] += isInPlace && format == dft::DFT_PACK_FULL ? 1 : 0;
    const auto written = RunAllRoads(input, job, 1, spectra, lines, result);
    std::vector<dft::Complex<Real>> back;
    for (std::size_t k = 0; k < written.size(); ++k) {
        if (k % lines.Elements() < layout.Elements()) {
            back.push_back({written[k], 0});
        }
    }
    EXPECT_LE(dft_slow::RelativeError(back, restored), Tolerance<Real>()) << layout << ", format " << format;
}

/// Codes, ranks and lengths of any value: what is no job is refused with a status that says why, and leaves nothing.
void AnyRecord(Input& input) {
    const int precision = input.Flag() ? input.Number(INT_MIN, INT_MAX) : input.Number(35, 36);
    const int domain = input.Flag() ? input.Number(INT_MIN, INT_MAX) : input.Number(31, 34);
    const int rank = input.Flag() ? input.Number(INT_MIN, INT_MAX) : input.Number(0, 8);
    int lengths[dft::kMaximumRank];
    for (int& length : lengths) {
        length = input.Flag() ? input.Number(INT_MIN, 0) : input.Number(1, 40);
    }
    const bool isRank = rank >= 1 && rank <= dft::kMaximumRank;
    const bool hasLengths = isRank && std::all_of(lengths, lengths + rank, [](int length) { return length > 0; });
    const bool isKnown = (domain == dft::DFT_COMPLEX || (domain == dft::DFT_REAL && rank == 1)) &&
                         (precision == dft::DFT_SINGLE || precision == dft::DFT_DOUBLE);
    dft::DftDescriptor* handle = nullptr;
    const std::int32_t status = rank == 1 ? dft::dfti_create_descriptor(&handle, precision, domain, rank, lengths[0])
                                          : dft::dfti_create_descriptor(&handle, precision, domain, rank, lengths);
    EXPECT_EQ(status == dft::DFT_OK, hasLengths && isKnown) << status;
    EXPECT_EQ(handle != nullptr, status == dft::DFT_OK);
    if (handle == nullptr) {
        EXPECT_TRUE(status == dft::DFT_BAD_ARGUMENT || status == dft::DFT_UNSUPPORTED) << status;
        EXPECT_EQ(dft::dfti_commit_descriptor(handle), dft::DFT_BAD_ARGUMENT);
        EXPECT_EQ(dft::dfti_free_descriptor(&handle), dft::DFT_BAD_ARGUMENT);
        return;
    }
    double data = 7;
    handle->placement = input.Number(43, 44);
    EXPECT_EQ(dft::dfti_compute_forward(handle, &data, &data), dft::DFT_NOT_COMMITTED);
    handle->packed_format = input.Number(53, 57);
    const bool isFormat = handle->packed_format >= dft::DFT_PACK_FULL && handle->packed_format <= dft::DFT_PACK_NATIVE;
    if (domain == dft::DFT_REAL && !isFormat) {
        EXPECT_EQ(dft::dfti_commit_descriptor(handle), dft::DFT_UNSUPPORTED);
    }
    handle->tag[input.Number(0, 2)] = 'x';
    EXPECT_EQ(dft::dfti_commit_descriptor(handle), dft::DFT_BAD_DESCRIPTOR);
    EXPECT_EQ(dft::dfti_compute_backward(handle, &data, &data), dft::DFT_BAD_DESCRIPTOR);
    EXPECT_EQ(dft::dfti_free_descriptor(&handle), dft::DFT_BAD_DESCRIPTOR);
    EXPECT_EQ(data, 7);
    handle->tag[0] = 'D';
    handle->tag[1] = 'F';
    handle->tag[2] = 'T';
    EXPECT_EQ(dft::dfti_free_descriptor(&handle), dft::DFT_OK);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    dft::dft_select_variant();
    const TestNumber variant(dft::dft_variant_code, input.Number(0, dft::kVariants - 1));
    const EngineThreads engine(input.Number(1, 4));
    const ForcedVectorClass vectors(input.Pick(simd::kVectorClasses));
    constexpr void (*cases[])(Input&) = {AnyRecord,          RealJob<float>,    RealJob<double>,   ComplexJob<double>,
                                         ComplexJob<double>, ComplexJob<float>, ComplexJob<float>, ComplexJob<float>};
    input.Pick(cases)(input);
    return 0;
}
