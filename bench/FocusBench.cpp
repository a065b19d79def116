#include "FocusBench.h"

#include "MemoryMeter.h"
#include "ProcessorTime.h"
#include "Repetitions.h"

#include <claribox/CImageFocus.h>
#include <claribox/ChFunctions.h>

#include <benchmark/benchmark.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>

namespace bench {
namespace {

// Changes the pixels of a picture, or leaves its own result; returns the result's first row.
using Run = std::function<const std::uint8_t*(Picture&)>;

struct Operation {
    const char* name;
    int half; // of the kernel's side, rounded down
    void (*run)(CImageFocus& focus, Picture& picture);
    void (*makeKernel)(ChMatrix<float>& kernel, int half);
    bool separable; // cv::GaussianBlur gives the same picture
};

template <int radius>
void RunBlur(CImageFocus& focus, Picture& picture) {
    focus.SetRadius(radius);
    focus.Blur(picture.pixels.data(), FoPixelFmt_BGR24, picture.Pitch());
}

template <int radius>
void RunDeBlur(CImageFocus& focus, Picture& picture) {
    focus.SetRadius(radius);
    focus.DeBlur(picture.pixels.data(), FoPixelFmt_BGR24, picture.Pitch());
}

constexpr int kDegree = 30;

void RunMotionBlur(CImageFocus& focus, Picture& picture) {
    focus.SetMotionLength(15);
    focus.SetMotionDegree(kDegree);
    focus.MotionBlur(picture.pixels.data(), FoPixelFmt_BGR24, picture.Pitch());
}

void MakeBell(ChMatrix<float>& kernel, int half) {
    ChMakeGaussianPSF(kernel, 2 * half + 1, 2 * half + 1, 2.0 * half);
}

void MakeRestoration(ChMatrix<float>& kernel, int half) {
    // The noise factor belongs to the operation, which leaves it in the object.
    Picture pixel(2 * half + 1, 2 * half + 1);
    CImageFocus focus;
    focus.SetSize(pixel.width, pixel.height);
    focus.SetRadius(half);
    focus.DeBlur(pixel.pixels.data(), FoPixelFmt_BGR24, pixel.Pitch());
    ChMakeCirclePSF(kernel, 2 * half + 1, 0.66 * half);
    ChMakeDeconvMatrix(kernel, 0.5f, static_cast<float>(focus.GetNoiseFactor()));
}

void MakeMotion(ChMatrix<float>& kernel, int half) {
    ChMakeMotionPSF(kernel, half, kDegree);
}

constexpr Operation kOperations[] = {
    {"Blur_radius_3", 3, RunBlur<3>, MakeBell, true},
    {"Blur_radius_5", 5, RunBlur<5>, MakeBell, true},
    {"MotionBlur_length_15_degree_30", 15, RunMotionBlur, MakeMotion, false},
    {"DeBlur_radius_3", 3, RunDeBlur<3>, MakeRestoration, false},
    {"DeBlur_radius_10", 10, RunDeBlur<10>, MakeRestoration, false},
};

Run Claribox(const Operation& operation, simd::VectorClass vectorClass) {
    return [&operation, vectorClass](Picture& picture) -> const std::uint8_t* {
        simd::ForceVectorClass(vectorClass);
        CImageFocus focus;
        focus.SetSize(picture.width, picture.height);
        operation.run(focus, picture);
        return picture.pixels.data();
    };
}

cv::Mat View(Picture& picture) {
    return {picture.height, picture.width, CV_8UC3, picture.pixels.data()};
}

// cv::filter2D with the operation's kernel, divided by its sum. Not by ChMatrix::Normalize, which drops the negative
// elements of a restoration kernel.
Run Filter2D(const Operation& operation) {
    ChMatrix<float> taps;
    operation.makeKernel(taps, operation.half);
    const cv::Mat unscaled(taps.m_Rows, taps.m_Cols, CV_32F, taps.m_Data);
    const cv::Mat kernel = unscaled / cv::sum(unscaled)[0];
    return [kernel, result = cv::Mat()](Picture& picture) mutable -> const std::uint8_t* {
        cv::filter2D(View(picture), result, -1, kernel);
        return result.data;
    };
}

// The bell 2^-(r^2 / (2*half)^2) is the Gaussian of standard deviation 2*half / sqrt(2 ln 2), so that two passes of
// single rows and columns give the same picture.
Run GaussianBlur(const Operation& operation) {
    const int side = 2 * operation.half + 1;
    const double deviation = 2.0 * operation.half / std::sqrt(2.0 * std::log(2.0));
    return [side, deviation, result = cv::Mat()](Picture& picture) mutable -> const std::uint8_t* {
        cv::GaussianBlur(View(picture), result, {side, side}, deviation);
        return result.data;
    };
}

struct Subject {
    std::string name;
    Run run;
    bool ours;
};

std::vector<Subject> SubjectsOf(const Operation& operation, const std::vector<simd::VectorClass>& classes) {
    std::vector<Subject> subjects = {{"filter2D", Filter2D(operation), false}};
    if (operation.separable) {
        subjects.push_back({"GaussianBlur", GaussianBlur(operation), false});
    }
    for (const simd::VectorClass vectorClass : classes) {
        subjects.push_back(
            {std::string("claribox:") + simd::Name(vectorClass), Claribox(operation, vectorClass), true});
    }
    return subjects;
}

// Largest difference of two pictures further than `half` from the edges: there the peers invent samples.
int LargestDifference(const Picture& picture, int half, const std::uint8_t* first, const std::uint8_t* second) {
    int largest = 0;
    for (int y = half; y < picture.height - half; ++y) {
        for (int x = 3 * half; x < 3 * (picture.width - half); ++x) {
            const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(y) * picture.Pitch() + x;
            largest = std::max(largest, std::abs(first[at] - second[at]));
        }
    }
    return largest;
}

// Peak of heap memory of an operation of ours.
double WorkingKiB(const Run& run, Picture& picture) {
    const MemoryMeter meter;
    run(picture);
    return static_cast<double>(meter.PeakBytes()) / 1024.0;
}

void Measure(benchmark::State& state, const Subject& subject, const Picture& original, Picture& work) {
    work = original;
    const double workingKiB = WorkingKiB(subject.run, work); // also brings in code and memory
    double total = 0.0;
    for ([[maybe_unused]] auto _ : state) {
        std::copy(original.pixels.begin(), original.pixels.end(), work.pixels.begin());
        const double start = ProcessorSeconds();
        benchmark::DoNotOptimize(subject.run(work));
        const double seconds = ProcessorSeconds() - start;
        state.SetIterationTime(seconds);
        total += seconds;
    }
    const double pixels = static_cast<double>(state.iterations()) * static_cast<double>(original.PixelCount());
    state.counters["ns_per_pixel"] = 1e9 * total / pixels;
    if (subject.ours) {
        state.counters["working_KiB"] = workingKiB;
    }
}

} // namespace

bool CheckFocusOperations(const std::vector<simd::VectorClass>& classes) {
    // The peers round to nearest, our quotients truncate.
    constexpr int kTolerance = 1;
    const Picture original = MakePhotograph(203, 101);
    bool equal = true;
    for (const Operation& operation : kOperations) {
        const std::vector<Subject> subjects = SubjectsOf(operation, classes);
        Picture input = original;
        const std::uint8_t* const expected = subjects.front().run(input);
        for (const Subject& subject : subjects) {
            Picture work = original;
            const int difference = LargestDifference(original, operation.half, expected, subject.run(work));
            if (difference > kTolerance) {
                std::fprintf(stderr, "%s: %s differs from %s by %d\n", operation.name, subject.name.c_str(),
                             subjects.front().name.c_str(), difference);
                equal = false;
            }
        }
    }
    return equal;
}

void RegisterFocusBenchmarks(const std::vector<Picture>& pictures, const std::vector<simd::VectorClass>& classes) {
    for (const Picture& picture : pictures) {
        const auto original = std::make_shared<const Picture>(picture);
        const auto work = std::make_shared<Picture>(picture);
        for (const Operation& operation : kOperations) {
            for (const Subject& subject : SubjectsOf(operation, classes)) {
                const std::string name = std::string(operation.name) + "/" + picture.SizeName() + "/" + subject.name;
                const bool large = picture.PixelCount() > 1000000;
                RegisterRepeated(
                    name, benchmark::kMillisecond, large ? 1 : 5, large ? 11 : 21,
                    [subject, original, work](benchmark::State& state) { Measure(state, subject, *original, *work); });
            }
        }
    }
}

} // namespace bench
