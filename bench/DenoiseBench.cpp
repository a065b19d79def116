#include "DenoiseBench.h"

#include "MemoryMeter.h"
#include "ProcessorTime.h"
#include "Repetitions.h"
#include "VagueDenoiser.h"

#include <claribox/CImageDenoiser.h>

#include "reference/denoise_slow.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <random>

namespace bench {
namespace {

using Plane = std::vector<std::uint8_t>;

constexpr double kDeviation = 12.0;
constexpr float kPeerThreshold = 12.0f; // of no weight for its time

struct Planes {
    Plane y, u, v;
};

struct Scene {
    int width;
    int height;
    Plane clean; // the luminance without noise
    Planes noisy;
};

// Luminance and chrominance by BT.601, full range, each sample with Gaussian noise of its own.
Scene MakeScene(const Picture& picture) {
    std::mt19937 generator(1);
    std::normal_distribution<double> noise(0.0, kDeviation);
    const auto byte = [](double value) { return static_cast<std::uint8_t>(std::clamp(value + 0.5, 0.0, 255.0)); };
    Scene scene = {picture.width, picture.height, {}, {}};
    for (std::size_t k = 0; k < picture.pixels.size(); k += 3) {
        const double blue = picture.pixels[k];
        const double red = picture.pixels[k + 2];
        const double y = 0.299 * red + 0.587 * picture.pixels[k + 1] + 0.114 * blue;
        scene.clean.push_back(byte(y));
        scene.noisy.y.push_back(byte(y + noise(generator)));
        scene.noisy.u.push_back(byte(128.0 + (blue - y) / 1.772 + noise(generator)));
        scene.noisy.v.push_back(byte(128.0 + (red - y) / 1.402 + noise(generator)));
    }
    return scene;
}

double PSNR(const Plane& clean, const Plane& plane) {
    double squares = 0.0;
    for (std::size_t k = 0; k < clean.size(); ++k) {
        const double difference = clean[k] - plane[k];
        squares += difference * difference;
    }
    return 10.0 * std::log10(255.0 * 255.0 * static_cast<double>(clean.size()) / squares);
}

// What a denoiser found out: threshold, left, top.
struct Measured {
    float threshold;
    int left, top;
    bool operator==(const Measured&) const = default;
};

using Denoise = std::function<Measured(Planes&)>;

Denoise Claribox(const Scene& scene, simd::VectorClass vectorClass) {
    return [width = scene.width, height = scene.height, vectorClass](Planes& planes) -> Measured {
        simd::ForceVectorClass(vectorClass);
        CImageDenoiser denoiser;
        denoiser.SetSize(width, height);
        denoiser.Denoise_YUV(planes.y.data(), planes.u.data(), planes.v.data());
        float threshold = 0.0f;
        float unused = 0.0f;
        denoiser.GetThreshold(threshold, unused);
        int left = 0;
        int top = 0;
        int right = 0;
        int bottom = 0;
        denoiser.GetEstRect(left, top, right, bottom);
        return {threshold, left, top};
    };
}

Denoise PlainForm(const Scene& scene) {
    return [width = scene.width, height = scene.height](Planes& planes) -> Measured {
        reference::DenoiseSlow denoiser = {width, height};
        denoiser.Denoise(planes.y, planes.u, planes.v);
        return {denoiser.threshold, denoiser.left, denoiser.top};
    };
}

std::string SubjectName(simd::VectorClass vectorClass) {
    return std::string("claribox:") + simd::Name(vectorClass);
}

void Measure(benchmark::State& state, const Scene& scene, const Denoise& denoise, bool ours) {
    Planes work = scene.noisy;
    {
        const MemoryMeter meter; // this first run also brings in code and memory
        denoise(work);
        const double floats = 1.0 * sizeof(float) * static_cast<double>(scene.clean.size());
        if (ours) {
            state.counters["working_KiB"] = (static_cast<double>(meter.PeakBytes()) - floats) / 1024.0;
        }
    }
    state.counters["dB_before"] = PSNR(scene.clean, scene.noisy.y);
    state.counters["dB_after"] = PSNR(scene.clean, work.y);
    double total = 0.0;
    for ([[maybe_unused]] auto _ : state) {
        work = scene.noisy;
        const double start = ProcessorSeconds();
        benchmark::DoNotOptimize(denoise(work));
        const double seconds = ProcessorSeconds() - start;
        state.SetIterationTime(seconds);
        total += seconds;
    }
    const double pixels = static_cast<double>(state.iterations()) * static_cast<double>(scene.clean.size());
    state.counters["ns_per_pixel"] = 1e9 * total / pixels;
}

void MeasurePeer(benchmark::State& state, const Scene& scene) {
    const auto pixels = static_cast<double>(scene.clean.size());
    const int frames = std::clamp(static_cast<int>(36e6 / pixels), 3, 100);
    const VagueDenoiser peer(scene.noisy.y, scene.width, scene.height, frames, kPeerThreshold);
    for ([[maybe_unused]] auto _ : state) {
        const double seconds = peer.SecondsPerFrame();
        state.SetIterationTime(seconds);
        state.counters["ns_per_pixel"] = 1e9 * seconds / pixels;
    }
}

void Register(const Scene& scene, const std::string& subject, int repetitions,
              const std::function<void(benchmark::State&)>& measure) {
    const std::string size = std::to_string(scene.width) + "x" + std::to_string(scene.height);
    RegisterRepeated("Denoise_YUV/" + size + "/" + subject, benchmark::kMillisecond, 1, repetitions, measure);
}

} // namespace

bool CheckDenoiser(const std::vector<simd::VectorClass>& classes) {
    const Scene scene = MakeScene(MakePhotograph(203, 149));
    Planes expected = scene.noisy;
    const Measured measured = PlainForm(scene)(expected);
    bool right = true;
    for (const simd::VectorClass vectorClass : classes) {
        Planes work = scene.noisy;
        if (Claribox(scene, vectorClass)(work) != measured || work.y != expected.y || work.u != expected.u ||
            work.v != expected.v) {
            std::fprintf(stderr, "Denoise_YUV: %s differs from the plain form\n", SubjectName(vectorClass).c_str());
            right = false;
        }
    }
    if (VagueDenoiser::IsInstalled()) {
        const VagueDenoiser peer(scene.noisy.y, scene.width, scene.height, 1, kPeerThreshold);
        if (!(PSNR(scene.clean, peer.FirstFrame()) > PSNR(scene.clean, scene.noisy.y))) {
            std::fprintf(stderr, "Denoise_YUV: vaguedenoiser does not denoise\n");
            right = false;
        }
    }
    return right;
}

void RegisterDenoiseBenchmarks(const std::vector<Picture>& pictures, const std::vector<simd::VectorClass>& classes) {
    const bool withPeer = VagueDenoiser::IsInstalled();
    if (!withPeer) {
        std::fprintf(stderr, "ffmpeg does not start: Denoise_YUV is measured without vaguedenoiser\n");
    }
    for (const Picture& picture : pictures) {
        const auto scene = std::make_shared<const Scene>(MakeScene(picture));
        for (const simd::VectorClass vectorClass : classes) {
            Register(*scene, SubjectName(vectorClass), 15,
                     [scene, denoise = Claribox(*scene, vectorClass)](benchmark::State& state) {
                         Measure(state, *scene, denoise, true);
                     });
        }
        Register(*scene, "plain", 3, [scene, denoise = PlainForm(*scene)](benchmark::State& state) {
            Measure(state, *scene, denoise, false);
        });
        if (withPeer) {
            Register(*scene, "vaguedenoiser", 7, [scene](benchmark::State& state) { MeasurePeer(state, *scene); });
        }
    }
}

} // namespace bench
