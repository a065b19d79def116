#include "DftBench.h"

#include "FftwPeer.h"
#include "ProcessorTime.h"
#include "Repetitions.h"
#include "dft/dft.h"
#include "dft/memory/engine_memory.h"
#include "kernels/spectra/RealTransform.h"

#include <claribox/KernelTable.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace bench {
namespace {

using Lengths = std::vector<int>; // slowest dimension first

constexpr int kPlaneSizes[][2] = {{612, 612},   {1124, 868},  {1400, 1100}, {1700, 1300}, {2020, 1380},
                                  {2101, 1501}, {2660, 2020}, {4100, 3100}, {1024, 1024}, {2048, 2048}};
constexpr int kErrorLengths[] = {60,   128,  151,  257,  512,  612,  720,   868,   1009,  1024,
                                 1100, 1124, 1300, 1380, 1400, 1501, 1700,  2003,  2020,  2048,
                                 2100, 2101, 2660, 3100, 4096, 4100, 10007, 22801, 65536, 1 << 18};

std::size_t CountOf(const Lengths& lengths) {
    std::size_t count = 1;
    for (const int length : lengths) {
        count *= static_cast<std::size_t>(length);
    }
    return count;
}

std::string SizeName(const Lengths& lengths) {
    return std::to_string(lengths.back()) + "x" + std::to_string(lengths.size() > 1 ? lengths.front() : 1);
}

std::string SubjectName(simd::VectorClass vectorClass) {
    return std::string("claribox:") + simd::Name(vectorClass);
}

/// A committed job in place.
template <typename Real>
class Job {
public:
    explicit Job(const Lengths& lengths) {
        const int precision = sizeof(Real) == sizeof(float) ? dft::DFT_SINGLE : dft::DFT_DOUBLE;
        const int rank = static_cast<int>(lengths.size());
        Require(rank == 1 ? dft::dfti_create_descriptor(&m_Handle, precision, dft::DFT_COMPLEX, rank, lengths[0])
                          : dft::dfti_create_descriptor(&m_Handle, precision, dft::DFT_COMPLEX, rank, lengths.data()));
        Require(dft::dfti_commit_descriptor(m_Handle));
    }
    ~Job() { dft::dfti_free_descriptor(&m_Handle); }
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;

    void Forward(void* data) const { Require(dft::dfti_compute_forward(m_Handle, data)); }

private:
    static void Require(std::int32_t status) {
        if (status != dft::DFT_OK) {
            throw std::runtime_error("the DFT engine returned " + std::to_string(status));
        }
    }
    dft::DftDescriptor* m_Handle = nullptr;
};

struct FreeAligned {
    void operator()(void* block) const { ChAlignedFree(block); }
};

/// Elements from ChAlignedAlloc, which asks for huge pages where they pay.
template <typename Real>
class Elements {
public:
    explicit Elements(std::size_t count) : m_Parts(2 * count), m_Block(ChAlignedAlloc(2 * count * sizeof(Real), 64)) {
        std::memset(m_Block.get(), 0, 2 * count * sizeof(Real));
    }
    Elements(const Elements& other) : Elements(other.m_Parts / 2) { std::copy(other.begin(), other.end(), begin()); }
    Real* begin() const { return static_cast<Real*>(m_Block.get()); }
    Real* end() const { return begin() + m_Parts; }

    /// Parts in [-1, 1) times `scale`; the same seed gives the same line in every precision.
    void Fill(std::uint32_t seed, Real scale) {
        std::minstd_rand generator(seed);
        for (Real& part : *this) {
            part = (static_cast<Real>(generator() >> 8) / Real{4194304} - 1) * scale;
        }
    }

private:
    std::size_t m_Parts;
    std::unique_ptr<void, FreeAligned> m_Block;
};

/// L2 norm of the difference over the L2 norm of `exact`.
template <typename Real, typename Wide>
double RelativeError(const Elements<Real>& result, const Elements<Wide>& exact) {
    long double difference = 0.0L;
    long double norm = 0.0L;
    const Real* part = result.begin();
    for (const Wide wide : exact) {
        const long double error = static_cast<long double>(*part++) - wide;
        difference += error * error;
        norm += static_cast<long double>(wide) * wide;
    }
    return static_cast<double>(std::sqrt(difference / norm));
}

constexpr char kWisdomFile[] = CLARIBOX_FFTW_WISDOM;

/// Transforms of one shape on one array. Peers are planned when they are first needed, so that a filter of benchmarks
/// leaves out the time for it too.
class Arena {
public:
    explicit Arena(Lengths lengths) : m_Lengths(std::move(lengths)) {}

    std::size_t Count() const { return CountOf(m_Lengths); }
    Elements<float>& Data() {
        if (!m_Data) {
            m_Data = std::make_unique<Elements<float>>(Count());
        }
        return *m_Data;
    }
    const FftwTransform<float>& Peer() {
        if (!m_Peer) {
            fftwf_import_wisdom_from_filename(kWisdomFile);
            m_Peer = std::make_unique<FftwTransform<float>>(m_Lengths, Data().begin(), FFTW_MEASURE);
            fftwf_export_wisdom_to_filename(kWisdomFile);
        }
        return *m_Peer;
    }
    const Job<float>& Ours() {
        if (!m_Ours) {
            m_Ours = std::make_unique<Job<float>>(m_Lengths);
        }
        return *m_Ours;
    }

    /// Holds our transform in the class in force to the peer's.
    bool IsRight() {
        constexpr std::uint32_t kSeed = 7;
        const FftwTransform<float>& peer = Peer();
        Data().Fill(kSeed, 1.0f);
        peer.Run();
        Elements<float> expected(Count());
        std::copy(Data().begin(), Data().end(), expected.begin());
        Data().Fill(kSeed, 1.0f);
        Ours().Forward(Data().begin());
        return RelativeError(Data(), expected) < 2e-6;
    }

private:
    Lengths m_Lengths;
    std::unique_ptr<Elements<float>> m_Data;
    std::unique_ptr<FftwTransform<float>> m_Peer;
    std::unique_ptr<Job<float>> m_Ours;
};

/// `run` of a filled array, `runs` times in one stretch of time.
template <typename Run>
void MeasureRuns(benchmark::State& state, Arena& arena, int runs, const Run& run) {
    // Each transform makes elements sqrt(count) times larger: they begin small enough to stay finite.
    const float scale = runs == 1 ? 1.0f : 0x1p-90f;
    double total = 0.0;
    for ([[maybe_unused]] auto _ : state) {
        arena.Data().Fill(1, scale);
        const double start = ProcessorSeconds();
        for (int k = 0; k < runs; ++k) {
            run(arena.Data().begin());
        }
        const double seconds = ProcessorSeconds() - start;
        state.SetIterationTime(seconds / runs);
        total += seconds;
    }
    const double elements = static_cast<double>(state.iterations()) * runs * static_cast<double>(arena.Count());
    state.counters["ns_per_pixel"] = 1e9 * total / elements;
}

void RegisterTimes(const std::string& operation, const Lengths& lengths, const std::vector<simd::VectorClass>& classes,
                   int iterations, int runs, int repetitions) {
    const std::string name = operation + "/" + SizeName(lengths) + "/";
    const auto unit = lengths.size() == 1 ? benchmark::kMicrosecond : benchmark::kMillisecond;
    const auto arena = std::make_shared<Arena>(lengths);
    for (const simd::VectorClass vectorClass : classes) {
        auto checked = std::make_shared<bool>(false);
        RegisterRepeated(name + SubjectName(vectorClass), unit, iterations, repetitions, [=](benchmark::State& state) {
            simd::ForceVectorClass(vectorClass);
            if (!*checked && !arena->IsRight()) {
                state.SkipWithError("the transform differs from FFTW's");
                return;
            }
            *checked = true;
            MeasureRuns(state, *arena, runs, [&](float* data) { arena->Ours().Forward(data); });
        });
    }
    RegisterRepeated(name + "FFTW", unit, iterations, repetitions, [=](benchmark::State& state) {
        const FftwTransform<float>& peer = arena->Peer();
        MeasureRuns(state, *arena, runs, [&](float*) { peer.Run(); });
    });
}

/// A real plane and its half spectrum, both filled: FFTW's out-of-place transform may overwrite its input as well.
struct RealArena {
    explicit RealArena(int planeWidth, int planeHeight)
        : width(planeWidth), height(planeHeight), plane(Samples() / 2 + 1),
          spectrum(static_cast<std::size_t>(width / 2 + 1) * static_cast<std::size_t>(height)) {}

    std::size_t Samples() const { return static_cast<std::size_t>(width) * static_cast<std::size_t>(height); }
    ChComplex* Spectrum() const { return reinterpret_cast<ChComplex*>(spectrum.begin()); }

    const FftwRealTransform& Peer() {
        if (!peer) {
            fftwf_import_wisdom_from_filename(kWisdomFile);
            peer = std::make_unique<FftwRealTransform>(Lengths{height, width}, plane.begin(), spectrum.begin(),
                                                       FFTW_MEASURE);
            fftwf_export_wisdom_to_filename(kWisdomFile);
        }
        return *peer;
    }

    /// Holds our transform in the class in force to the peer's.
    bool IsRight() {
        const FftwRealTransform& wanted = Peer();
        plane.Fill(7, 1.0f);
        wanted.Run();
        Elements<float> expected(spectrum);
        plane.Fill(7, 1.0f);
        kernels::RealTransform(width, height).Forward(plane.begin(), Spectrum());
        return RelativeError(spectrum, expected) < 2e-6;
    }

    int width;
    int height;
    Elements<float> plane;
    Elements<float> spectrum;
    std::unique_ptr<FftwRealTransform> peer;
};

/// `run()` of a filled plane.
template <typename Run>
void MeasureReal(benchmark::State& state, RealArena& arena, const Run& run) {
    double total = 0.0;
    for ([[maybe_unused]] auto _ : state) {
        arena.plane.Fill(1, 1.0f);
        const double start = ProcessorSeconds();
        run();
        const double seconds = ProcessorSeconds() - start;
        state.SetIterationTime(seconds);
        total += seconds;
    }
    state.counters["ns_per_pixel"] =
        1e9 * total / (static_cast<double>(state.iterations()) * static_cast<double>(arena.Samples()));
}

void RegisterReal(int width, int height, const std::vector<simd::VectorClass>& classes, int repetitions) {
    const std::string name = "DFT_real/" + SizeName({height, width}) + "/";
    const auto arena = std::make_shared<std::unique_ptr<RealArena>>(); // made when it is first needed
    const auto made = [=]() -> RealArena& {
        if (!*arena) {
            *arena = std::make_unique<RealArena>(width, height);
        }
        return **arena;
    };
    for (const simd::VectorClass vectorClass : classes) {
        RegisterRepeated(name + SubjectName(vectorClass), benchmark::kMillisecond, 1, repetitions,
                         [=](benchmark::State& state) {
                             simd::ForceVectorClass(vectorClass);
                             if (!made().IsRight()) {
                                 state.SkipWithError("the transform differs from FFTW's");
                                 return;
                             }
                             kernels::RealTransform ours(width, height);
                             MeasureReal(state, made(), [&] { ours.Forward(made().plane.begin(), made().Spectrum()); });
                         });
    }
    RegisterRepeated(name + "FFTW", benchmark::kMillisecond, 1, repetitions, [=](benchmark::State& state) {
        const FftwRealTransform& peer = made().Peer();
        MeasureReal(state, made(), [&] { peer.Run(); });
    });
}

void RegisterCommit(const Lengths& lengths, simd::VectorClass vectorClass) {
    const std::string name = "DFT_commit/" + SizeName(lengths) + "/" + SubjectName(vectorClass);
    RegisterRepeated(name, benchmark::kMillisecond, 1, 21, [=](benchmark::State& state) {
        simd::ForceVectorClass(vectorClass);
        double total = 0.0;
        for ([[maybe_unused]] auto _ : state) {
            const double start = ProcessorSeconds();
            const Job<float> job(lengths);
            const double seconds = ProcessorSeconds() - start;
            state.SetIterationTime(seconds);
            total += seconds;
        }
        state.counters["ns_per_pixel"] =
            1e9 * total / static_cast<double>(state.iterations()) / static_cast<double>(CountOf(lengths));
    });
}

/// Error of `run`, which transforms the elements in place, over some random lines.
template <typename Real, typename Run>
double ErrorOf(int length, Elements<Real>& data, const Run& run) {
    constexpr int kLines = 8;
    Elements<long double> exact(static_cast<std::size_t>(length));
    const FftwTransform<long double> wide({length}, exact.begin(), FFTW_ESTIMATE);
    double squares = 0.0;
    for (std::uint32_t seed = 1; seed <= kLines; ++seed) {
        data.Fill(seed, Real{1});
        exact.Fill(seed, 1.0L);
        wide.Run();
        run();
        const double error = RelativeError(data, exact);
        squares += error * error;
    }
    return std::sqrt(squares / kLines);
}

/// `makeTransform(data)` gives the transform of `data` in place, a function without arguments.
template <typename Real, typename MakeTransform>
void RegisterError(const std::string& subject, int length, const MakeTransform& makeTransform) {
    const std::string operation = sizeof(Real) == sizeof(float) ? "DFT_error_single/" : "DFT_error_double/";
    const std::string name = operation + SizeName({length}) + "/" + subject;
    benchmark::RegisterBenchmark(name.c_str(),
                                 [=](benchmark::State& state) {
                                     for ([[maybe_unused]] auto _ : state) {
                                         Elements<Real> data(static_cast<std::size_t>(length));
                                         state.counters["relative_error"] = ErrorOf(length, data, makeTransform(data));
                                         state.SetIterationTime(1e-9); // nothing is timed
                                     }
                                 })
        ->UseManualTime()
        ->Iterations(1);
}

template <typename Real>
void RegisterErrors(int length, const std::vector<simd::VectorClass>& classes) {
    for (const simd::VectorClass vectorClass : classes) {
        RegisterError<Real>(SubjectName(vectorClass), length, [=](Elements<Real>& data) {
            simd::ForceVectorClass(vectorClass);
            return [&data, job = std::make_shared<Job<Real>>(Lengths{length})] { job->Forward(data.begin()); };
        });
    }
    RegisterError<Real>("FFTW", length, [=](Elements<Real>& data) {
        return [plan = std::make_shared<FftwTransform<Real>>(Lengths{length}, data.begin(), FFTW_ESTIMATE)] {
            plan->Run();
        };
    });
}

} // namespace

void RegisterDftBenchmarks(const std::vector<simd::VectorClass>& classes) {
    dft::serial_switch = 1;
    for (const auto& [width, height] : kPlaneSizes) {
        RegisterTimes("DFT_2D", {height, width}, classes, 1, 1, width > 2500 ? 11 : 21);
        RegisterReal(width, height, classes, width > 2500 ? 11 : 21);
    }
    for (int log2 = 8; log2 <= 16; ++log2) {
        // Long enough that the microseconds in which a processor wakes its wide units are lost among them.
        const int iterations = std::clamp(1 << (18 - log2), 4, 64);
        RegisterTimes("DFT_1D", {1 << log2}, classes, iterations, 320 / log2, 21);
    }
    for (const simd::VectorClass vectorClass : classes) {
        RegisterCommit({3100, 4100}, vectorClass);
    }
    for (const int length : kErrorLengths) {
        RegisterErrors<float>(length, classes);
        RegisterErrors<double>(length, classes);
    }
}

} // namespace bench
