// claribox_bench [--picture=FILE.ppm] [--vector_class=NAME|all] [options of Google Benchmark]: measures the library,
// and peers beside it, in one run and on one thread.
#include "CopyBench.h"
#include "DenoiseBench.h"
#include "DftBench.h"
#include "FocusBench.h"
#include "GuessBench.h"
#include "MotionBench.h"
#include "Picture.h"
#include "processor/ProcessorCensus.h"
#include "simd/VectorClass.h"

#include <benchmark/benchmark.h>
#include <fftw3.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string_view>

namespace {

constexpr int kLargeWidth = 4000;
constexpr int kLargeHeight = 3000;

std::vector<simd::VectorClass> ParseClasses(std::string_view name) {
    std::vector<simd::VectorClass> classes;
    for (const simd::VectorClass vectorClass : simd::kVectorClasses) {
        if (simd::IsSupported(vectorClass) && (name == "all" || name == simd::Name(vectorClass))) {
            classes.push_back(vectorClass);
        }
    }
    if (classes.empty()) {
        throw std::runtime_error("--vector_class=" + std::string(name) +
                                 ": unknown or not for this processor; portable, SSE2, AVX2, AVX-512 or all");
    }
    return classes;
}

// The picture at its own size, and enlarged to that of a camera's.
std::vector<bench::Picture> PicturesFrom(bench::Picture picture) {
    bench::Picture large(kLargeWidth, kLargeHeight);
    const cv::Mat source(picture.height, picture.width, CV_8UC3, picture.pixels.data());
    cv::Mat target(large.height, large.width, CV_8UC3, large.pixels.data());
    cv::resize(source, target, target.size(), 0.0, 0.0, cv::INTER_CUBIC);
    return {std::move(picture), std::move(large)};
}

// Leaves the options of Google Benchmark in `arguments`.
void Configure(std::vector<char*>& arguments) {
    constexpr std::string_view kPicture = "--picture=";
    constexpr std::string_view kVectorClass = "--vector_class=";
    std::vector<bench::Picture> pictures;
    const simd::VectorClass widest = simd::ActiveVectorClass();
    std::vector<simd::VectorClass> classes = {widest};
    std::erase_if(arguments, [&](const char* argument) {
        const std::string_view text = argument;
        if (text.starts_with(kPicture)) {
            pictures = PicturesFrom(bench::ReadPPM(std::string(text.substr(kPicture.size()))));
            return true;
        }
        if (text.starts_with(kVectorClass)) {
            classes = ParseClasses(text.substr(kVectorClass.size()));
            return true;
        }
        return false;
    });
    if (pictures.empty()) {
        pictures = {bench::MakePhotograph(512, 512), bench::MakePhotograph(640, 427),
                    bench::MakePhotograph(kLargeWidth, kLargeHeight)};
    }
    if (!bench::CheckFocusOperations(classes) || !bench::CheckMotionDeblur(classes) || !bench::CheckDenoiser(classes) ||
        !bench::CheckGuess(classes)) {
        throw std::runtime_error("results are wrong; nothing was measured");
    }
    bench::RegisterFocusBenchmarks(pictures, classes);
    bench::RegisterMotionBenchmarks(pictures, classes);
    bench::RegisterGuessBenchmarks(pictures, classes);
    bench::RegisterDenoiseBenchmarks(pictures, classes);
    bench::RegisterCopyBenchmarks();
    bench::RegisterDftBenchmarks(classes);
    benchmark::AddCustomContext("widest_vector_class", simd::Name(widest));
    benchmark::AddCustomContext("opencv_version", CV_VERSION);
    benchmark::AddCustomContext("fftw_version", fftwf_version);
}

} // namespace

int main(int argc, char** argv) {
    // Subjects take turns, so that a busy moment of the machine falls on all alike.
    char interleaving[] = "--benchmark_enable_random_interleaving=true";
    std::vector<char*> arguments = {argv[0], interleaving};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    cv::setNumThreads(1);
    CensusPackages = CensusCoresPerPackage = CensusThreadsPerCore = 1; // the form of one thread
    try {
        Configure(arguments);
        int count = static_cast<int>(arguments.size());
        benchmark::Initialize(&count, arguments.data());
        if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
            return 1;
        }
        benchmark::RunSpecifiedBenchmarks();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "claribox_bench: %s\n", error.what());
        return 1;
    }
    return 0;
}
