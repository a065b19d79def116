#include "GuessBench.h"

#include "ProcessorTime.h"
#include "Repetitions.h"
#include "reference/guess_slow.h"

#include <claribox/CImageFocus.h>
#include <claribox/ChFunctions.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>

namespace bench {
namespace {

constexpr int kRegion = 512;

// A picture and the plane of luminance at its top left.
struct Scene {
    Picture picture;
    int width;
    int height;
    reference::Plane plane;

    explicit Scene(const Picture& original)
        : picture(original), width(std::min(original.width, kRegion)), height(std::min(original.height, kRegion)),
          plane(reference::Luminance(reference::Split(original.pixels.data(), width, height, 3, original.Pitch()))) {}
};

// Guesses the direction in a scene.
using Guess = std::function<int(Scene&)>;

struct Subject {
    std::string name;
    Guess direction; // on the plane
    Guess degree;    // on the packed pixels
};

Subject Plain() {
    return {
        "plain",
        [](Scene& scene) {
            return reference::GuessMotionDirection<double>(scene.plane, scene.width, {0, 0, scene.width, scene.height});
        },
        [](Scene& scene) {
            reference::Region region;
            const Picture& picture = scene.picture;
            return reference::GuessMotionDegree<double>(picture.pixels.data(), picture.width, picture.height, 3,
                                                        picture.Pitch(), region);
        }};
}

Subject Claribox(simd::VectorClass vectorClass) {
    return {std::string("claribox:") + simd::Name(vectorClass),
            [vectorClass](Scene& scene) {
                simd::ForceVectorClass(vectorClass);
                return ChGuessMotionDirection(scene.plane.data(), scene.width, scene.height, 0, 0, scene.width,
                                              scene.height);
            },
            [vectorClass](Scene& scene) {
                simd::ForceVectorClass(vectorClass);
                CImageFocus focus;
                focus.SetSize(scene.picture.width, scene.picture.height);
                return focus.GuessMotionDegree(scene.picture.pixels.data(), FoPixelFmt_BGR24, scene.picture.Pitch());
            }};
}

void Measure(benchmark::State& state, Scene& scene, const Guess& guess, double pixels) {
    benchmark::DoNotOptimize(guess(scene)); // brings in code and memory
    double total = 0.0;
    for ([[maybe_unused]] auto _ : state) {
        const double start = ProcessorSeconds();
        benchmark::DoNotOptimize(guess(scene));
        const double seconds = ProcessorSeconds() - start;
        state.SetIterationTime(seconds);
        total += seconds;
    }
    state.counters["ns_per_pixel"] = 1e9 * total / (static_cast<double>(state.iterations()) * pixels);
}

} // namespace

bool CheckGuess(const std::vector<simd::VectorClass>& classes) {
    bool equal = true;
    for (const Picture& picture : {MakePhotograph(203, 149), MakePhotograph(2080, 1060)}) {
        Scene scene(picture);
        const int direction = Plain().direction(scene);
        const int degree = Plain().degree(scene);
        for (const simd::VectorClass vectorClass : classes) {
            const Subject subject = Claribox(vectorClass);
            if (subject.direction(scene) != direction || subject.degree(scene) != degree) {
                std::fprintf(stderr, "GuessMotionDegree, %s: %s differs from the plain form\n",
                             picture.SizeName().c_str(), subject.name.c_str());
                equal = false;
            }
        }
    }
    return equal;
}

void RegisterGuessBenchmarks(const std::vector<Picture>& pictures, const std::vector<simd::VectorClass>& classes) {
    constexpr int kOurRepetitions = 21;
    constexpr int kPlainRepetitions = 5;
    for (const Picture& picture : pictures) {
        const auto scene = std::make_shared<Scene>(picture);
        const auto both = [&](const Subject& subject, int repetitions) {
            const auto add = [&](const char* operation, const Guess& guess, double pixels) {
                RegisterRepeated(std::string(operation) + "/" + picture.SizeName() + "/" + subject.name,
                                 benchmark::kMillisecond, 1, repetitions,
                                 [=](benchmark::State& state) { Measure(state, *scene, guess, pixels); });
            };
            add("ChGuessMotionDirection", subject.direction, static_cast<double>(scene->plane.size()));
            add("GuessMotionDegree", subject.degree, static_cast<double>(picture.PixelCount()));
        };
        for (const simd::VectorClass vectorClass : classes) {
            both(Claribox(vectorClass), kOurRepetitions);
        }
        both(Plain(), kPlainRepetitions);
    }
}

} // namespace bench
