// Where the elements of a job lie, arrays that are no larger than that, and slots that can be watched.
#pragma once

#include "common/GuardedBuffer.h"
#include "dft/TestJob.h"
#include "dft/TestSurroundings.h"
#include "reference/dft_slow.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <functional>
#include <numeric>
#include <ostream>
#include <string>
#include <vector>

/// Where one side of a job lies. Strides slowest dimension first, as the lengths; none: dense.
struct Place {
    std::vector<int> strides;
    int offset = 0;
    int distance = 0;
};

struct Layout {
    std::string name;
    Lengths lengths;
    Place input;
    Place output;
    int transforms = 1;

    friend std::ostream& operator<<(std::ostream& out, const Layout& layout) {
        return out << layout.name << ' ' << ::testing::PrintToString(layout.lengths) << " x " << layout.transforms;
    }

    std::size_t Elements() const {
        return static_cast<std::size_t>(std::accumulate(lengths.begin(), lengths.end(), 1, std::multiplies<>()));
    }
    std::size_t AllElements() const { return Elements() * static_cast<std::size_t>(transforms); }
    int Stride(const Place& place, std::size_t dimension) const {
        const auto behind = lengths.begin() + static_cast<std::ptrdiff_t>(dimension) + 1;
        return place.strides.empty() ? std::accumulate(behind, lengths.end(), 1, std::multiplies<>())
                                     : place.strides[dimension];
    }
    /// Of every element of the job, transform after transform, the last dimension fastest.
    std::vector<std::size_t> Positions(const Place& place) const {
        std::vector<std::size_t> positions;
        for (std::size_t index = 0; index < AllElements(); ++index) {
            int at = place.offset + static_cast<int>(index / Elements()) * place.distance;
            std::size_t rest = index % Elements();
            for (std::size_t k = lengths.size(); k-- > 0;) {
                const auto length = static_cast<std::size_t>(lengths[k]);
                at += static_cast<int>(rest % length) * Stride(place, k);
                rest /= length;
            }
            positions.push_back(static_cast<std::size_t>(at));
        }
        return positions;
    }
    /// Lays out a job of these lengths.
    void LayOut(dft::DftDescriptor* records) const {
        for (int k = 0; k < records->rank; ++k) {
            const auto dimension = lengths.size() - 1 - static_cast<std::size_t>(k);
            records[k].input_stride = Stride(input, dimension);
            records[k].output_stride = Stride(output, dimension);
        }
        records->number_of_transforms = transforms;
        records->input_offset = input.offset;
        records->output_offset = output.offset;
        records->input_distance = input.distance;
        records->output_distance = output.distance;
    }
    void LayOutAndCommit(const Job& job) const {
        LayOut(job.handle);
        job.Commit();
    }
};

/// Jobs of every rank and kind of stride, whose bytes checksums hold.
inline const std::vector<Layout> kStridedJobs = {
    {"strided line", {60}, {{3}, 5}, {{2}, 1}},
    {"strided power of two", {4096}, {{2}, 1}, {{3}, 0}},
    {"lines", {60}, {{}, 2, 61}, {{}, 0, 60}, 19},
    {"interleaved lines", {34}, {{20}, 1, 1}, {{20}, 0, 1}, 20},
    {"powers of two", {64}, {{}, 0, 70}, {{}, 0, 64}, 37},
    {"plane", {34, 17}, {{20, 1}, 3}, {{18, 1}, 0}},
    {"upside down", {20, 17}, {{-17, 1}, 323}, {{20, -1}, 16}},
    {"columns before rows", {20, 18}, {{1, 21}, 2}, {{1, 20}, 0}},
    {"plane of powers of two", {256, 128}, {}, {}},
    {"picture", {200, 141}, {}, {}},
    {"Bluestein and direct method", {151, 149}, {}, {}},
    {"planes", {12, 10}, {{12, 1}, 2, 150}, {{10, 1}, 0, 121}, 5},
    {"volume", {5, 6, 18}, {}, {}},
    {"seven dimensions", {2, 3, 1, 2, 3, 2, 5}, {}, {}},
};

/// What `run(input, output)` leaves at `results`, between arrays that are no larger than a job's elements reach.
/// Results lie in the input's array where the job is in place, else in the output's; everything but them must be as it
/// was.
template <typename Element, typename Run>
std::vector<Element> ResultsBetweenGuards(const std::vector<std::size_t>& inputs, const std::vector<Element>& x,
                                          const std::vector<std::size_t>& results, bool isInPlace,
                                          std::size_t misalignment, Run run) {
    const std::size_t inputEnd = *std::max_element(inputs.begin(), inputs.end()) + 1;
    const std::size_t resultEnd = *std::max_element(results.begin(), results.end()) + 1;
    const std::size_t sizes[] = {isInPlace ? std::max(inputEnd, resultEnd) : inputEnd, isInPlace ? 0 : resultEnd};
    GuardedBuffer<Element> input(sizes[0], misalignment);
    GuardedBuffer<Element> output(sizes[1], misalignment);
    GuardedBuffer<Element> inputAfter(sizes[0], misalignment);
    GuardedBuffer<Element> outputAfter(sizes[1], misalignment);
    for (auto* const array : {&input, &output, &inputAfter, &outputAfter}) {
        for (std::size_t k = 0; k < array->size_bytes(); ++k) {
            array->bytes()[k] = static_cast<unsigned char>(k * 37 + 11);
        }
    }
    for (std::size_t k = 0; k < x.size(); ++k) {
        input.Write(inputs[k], x[k]);
        inputAfter.Write(inputs[k], x[k]);
    }
    run(input.data(), output.data());
    std::vector<Element> elements;
    for (const std::size_t at : results) {
        elements.push_back((isInPlace ? input : output).Read(at));
        (isInPlace ? inputAfter : outputAfter).Write(at, elements.back());
    }
    EXPECT_TRUE(SameBytes(inputAfter, input)) << "input, " << (isInPlace ? "outside the job" : "which was changed");
    EXPECT_TRUE(SameBytes(outputAfter, output)) << "output, outside the job";
    EXPECT_TRUE(input.GuardsIntact());
    EXPECT_TRUE(output.GuardsIntact());
    return elements;
}

/// The packed line of a spectrum, in multiples of `scale`. `zero` stands where the definition of the layout has a zero;
/// the last one is not scaled.
template <typename Real>
std::vector<Real> Packed(int format, const dft_slow::WideLine& spectrum, double scale, double zero) {
    const std::size_t n = spectrum.size();
    std::vector<Real> parts;
    for (std::size_t j = 0; j <= n / 2; ++j) {
        parts.push_back(static_cast<Real>(spectrum[j].real() * scale));
        parts.push_back(static_cast<Real>(j == 0 ? zero : 2 * j == n ? std::abs(zero) : spectrum[j].imag() * scale));
    }
    if (format != dft::DFT_PACK_FULL) {
        parts.erase(parts.begin() + 1);
        if (n % 2 == 0) {
            parts.pop_back();
        }
        if (n % 2 == 0 && format == dft::DFT_PACK_NATIVE) {
            std::rotate(parts.begin() + 1, parts.end() - 1, parts.end());
        }
    }
    return parts;
}

/// From now on every slot of a job counts its calls, and call `failing` of a record's returns 7. No job is a single
/// call, and none of its routines the engine's own. Once for a job, which then runs in this direction alone; one at a
/// time.
template <typename Real>
class Watch {
public:
    Watch(const Job& job, int sign, int failingRecord = -1, int failing = -1) {
        job->one_shot = 0;
        for (int k = 0; k < job->rank; ++k) {
            dft::DftRoutine& slot = SlotOf<Real>(job.handle[k], sign);
            s_Before[k] = slot;
            slot = Watched;
            s_Calls[k] = 0;
        }
        s_FailingRecord = failingRecord;
        s_Failing = failing;
        s_IsInRegion = false;
    }
    int Calls(int record) const { return s_Calls[record]; }
    bool WasInRegion() const { return s_IsInRegion; }

private:
    static std::int32_t Watched(void* input, void* output, dft::DftDescriptor* record, void* work) {
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
};
