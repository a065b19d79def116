#include "MotionBench.h"

#include "MemoryMeter.h"
#include "ProcessorTime.h"
#include "Repetitions.h"
#include "processor/ProcessorCensus.h"

#include <claribox/CImageFocus.h>
#include <claribox/ChFunctions.h>

#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace bench {
namespace {

constexpr char kName[] = "DeMotionBlur_length_15_degree_30";
constexpr char kPeer[] = "FFTW";
constexpr int kLength = 15;
constexpr int kDegree = 30;
constexpr int kMargin = 50;
constexpr float kNoise = 0.06f;
constexpr float kFloor = 0.01f;

// The pipeline as one would write it on FFTW: complex transforms in place, plain loops, no other memory than two
// spectra. Both, and the plans, are made once.
class FftwDeblur {
public:
    FftwDeblur(int width, int height, unsigned flags)
        : m_Width(width), m_Height(height), m_Columns(width + 2 * kMargin), m_Rows(height + 2 * kMargin),
          m_Count(static_cast<std::size_t>(m_Columns) * static_cast<std::size_t>(m_Rows)),
          m_Inverse(fftwf_alloc_complex(m_Count)), m_Work(fftwf_alloc_complex(m_Count)),
          m_ForwardInverse(Plan(m_Inverse, FFTW_FORWARD, flags)), m_Forward(Plan(m_Work, FFTW_FORWARD, flags)),
          m_Backward(Plan(m_Work, FFTW_BACKWARD, flags)) {}
    ~FftwDeblur() {
        for (const fftwf_plan plan : {m_ForwardInverse, m_Forward, m_Backward}) {
            fftwf_destroy_plan(plan);
        }
        fftwf_free(m_Inverse);
        fftwf_free(m_Work);
    }
    FftwDeblur(const FftwDeblur&) = delete;
    FftwDeblur& operator=(const FftwDeblur&) = delete;

    void Run(Picture& picture) {
        MakeInverse();
        for (int channel = 0; channel < 3; ++channel) {
            Load(picture, channel);
            fftwf_execute(m_Forward);
            Multiply();
            fftwf_execute(m_Backward);
            StoreInto(picture, channel);
        }
    }

private:
    fftwf_plan Plan(fftwf_complex* data, int sign, unsigned flags) const {
        return fftwf_plan_dft_2d(m_Rows, m_Columns, data, data, sign, flags);
    }

    std::size_t At(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_Columns) + static_cast<std::size_t>(x);
    }

    void MakeInverse() {
        ChMatrix<float> psf;
        ChMakeMotionPSF(psf, kLength, kDegree);
        psf.Normalize();
        std::fill_n(&m_Inverse[0][0], 2 * m_Count, 0.0f);
        for (int i = 0; i < psf.m_Rows; ++i) {
            for (int j = 0; j < psf.m_Cols; ++j) {
                m_Inverse[At((j - kLength + m_Columns) % m_Columns, (i - kLength + m_Rows) % m_Rows)][0] = psf.At(i, j);
            }
        }
        fftwf_execute(m_ForwardInverse);
        for (std::size_t k = 0; k < m_Count; ++k) {
            const float re = m_Inverse[k][0];
            const float im = m_Inverse[k][1];
            float den = re * re + kNoise + im * im;
            den = den < kFloor ? den + kFloor : den;
            m_Inverse[k][0] = re / den;
            m_Inverse[k][1] = -im / den;
        }
    }

    void Load(const Picture& picture, int channel) {
        for (int y = 0; y < m_Rows; ++y) {
            const int row = std::clamp(y - kMargin, 0, m_Height - 1);
            const std::uint8_t* const from =
                picture.pixels.data() + static_cast<std::ptrdiff_t>(row) * picture.Pitch() + channel;
            fftwf_complex* const to = m_Work + At(0, y);
            for (int x = 0; x < m_Columns; ++x) {
                to[x][0] = static_cast<float>(from[3 * std::clamp(x - kMargin, 0, m_Width - 1)]);
                to[x][1] = 0.0f;
            }
        }
    }

    void Multiply() {
        const float scale = 1.0f / static_cast<float>(m_Count);
        for (std::size_t k = 0; k < m_Count; ++k) {
            const float a = m_Inverse[k][0];
            const float b = m_Inverse[k][1];
            const float c = m_Work[k][0];
            const float d = m_Work[k][1];
            m_Work[k][0] = (a * c - b * d) * scale;
            m_Work[k][1] = (a * d + b * c) * scale;
        }
    }

    void StoreInto(Picture& picture, int channel) const {
        for (int y = 0; y < m_Height; ++y) {
            const fftwf_complex* const from = m_Work + At(kMargin, y + kMargin);
            std::uint8_t* const to = picture.pixels.data() + static_cast<std::ptrdiff_t>(y) * picture.Pitch() + channel;
            for (int x = 0; x < m_Width; ++x) {
                to[3 * x] = static_cast<std::uint8_t>(std::clamp(from[x][0], 0.0f, 255.0f) + 0.5f);
            }
        }
    }

    int m_Width;
    int m_Height;
    int m_Columns;
    int m_Rows;
    std::size_t m_Count;
    fftwf_complex* m_Inverse;
    fftwf_complex* m_Work;
    fftwf_plan m_ForwardInverse;
    fftwf_plan m_Forward;
    fftwf_plan m_Backward;
};

void RunClaribox(Picture& picture, simd::VectorClass vectorClass) {
    simd::ForceVectorClass(vectorClass);
    CImageFocus focus;
    focus.SetSize(picture.width, picture.height);
    focus.SetMotionLength(kLength);
    focus.SetMotionDegree(kDegree);
    focus.DeMotionBlur(picture.pixels.data(), FoPixelFmt_BGR24, picture.Pitch());
}

// Peak of heap memory of a whole call, in the form that so many processor packages choose.
double BytesPerPixel(const Picture& original, simd::VectorClass vectorClass, int packages) {
    Picture work = original;
    const int before = CensusPackages;
    CensusPackages = packages;
    const MemoryMeter meter;
    RunClaribox(work, vectorClass);
    CensusPackages = before;
    return static_cast<double>(meter.PeakBytes()) / static_cast<double>(original.PixelCount());
}

// One operation on one picture, over and over. Whoever calls has run it once, which brings in code and memory.
template <typename Run>
void Measure(benchmark::State& state, const Picture& original, Run run) {
    Picture work = original;
    double total = 0.0;
    for ([[maybe_unused]] auto _ : state) {
        std::copy(original.pixels.begin(), original.pixels.end(), work.pixels.begin());
        const double start = ProcessorSeconds();
        run(work);
        benchmark::DoNotOptimize(work.pixels.data());
        const double seconds = ProcessorSeconds() - start;
        state.SetIterationTime(seconds);
        total += seconds;
    }
    const double pixels = static_cast<double>(state.iterations()) * static_cast<double>(original.PixelCount());
    state.counters["ns_per_pixel"] = 1e9 * total / pixels;
}

void MeasureClaribox(benchmark::State& state, const Picture& original, simd::VectorClass vectorClass) {
    state.counters["threaded_bytes_per_pixel"] = BytesPerPixel(original, vectorClass, 2);
    state.counters["bytes_per_pixel"] = BytesPerPixel(original, vectorClass, 1);
    Measure(state, original, [vectorClass](Picture& work) { RunClaribox(work, vectorClass); });
}

// The plans of each size are measured once, and what FFTW learned is kept in a file.
void MeasureFftw(benchmark::State& state, const Picture& original, std::unique_ptr<FftwDeblur>& peer) {
    if (peer == nullptr) {
        fftwf_import_wisdom_from_filename(CLARIBOX_FFTW_WISDOM);
        peer = std::make_unique<FftwDeblur>(original.width, original.height, FFTW_MEASURE);
        fftwf_export_wisdom_to_filename(CLARIBOX_FFTW_WISDOM);
    }
    Picture first = original;
    peer->Run(first);
    Measure(state, original, [&peer](Picture& work) { peer->Run(work); });
}

int LargestDifference(const Picture& first, const Picture& second) {
    int largest = 0;
    for (std::size_t k = 0; k < first.pixels.size(); ++k) {
        largest = std::max(largest, std::abs(first.pixels[k] - second.pixels[k]));
    }
    return largest;
}

} // namespace

bool CheckMotionDeblur(const std::vector<simd::VectorClass>& classes) {
    constexpr int kTolerance = 1; // of values that lie next to a half
    const Picture original = MakePhotograph(203, 101);
    Picture expected = original;
    FftwDeblur(original.width, original.height, FFTW_ESTIMATE).Run(expected);
    bool equal = true;
    for (const simd::VectorClass vectorClass : classes) {
        Picture work = original;
        RunClaribox(work, vectorClass);
        const int difference = LargestDifference(expected, work);
        if (difference > kTolerance) {
            std::fprintf(stderr, "%s: claribox:%s differs from %s by %d\n", kName, simd::Name(vectorClass), kPeer,
                         difference);
            equal = false;
        }
    }
    return equal;
}

void RegisterMotionBenchmarks(const std::vector<Picture>& pictures, const std::vector<simd::VectorClass>& classes) {
    for (const Picture& picture : pictures) {
        const auto original = std::make_shared<const Picture>(picture);
        const auto add = [&](const std::string& subject, const auto& measure) {
            const bool large = picture.PixelCount() > 1000000;
            RegisterRepeated(std::string(kName) + "/" + picture.SizeName() + "/" + subject, benchmark::kMillisecond,
                             large ? 1 : 5, large ? 7 : 21, measure);
        };
        for (const simd::VectorClass vectorClass : classes) {
            add(std::string("claribox:") + simd::Name(vectorClass),
                [original, vectorClass](benchmark::State& state) { MeasureClaribox(state, *original, vectorClass); });
        }
        const auto peer = std::make_shared<std::unique_ptr<FftwDeblur>>();
        add(kPeer, [original, peer](benchmark::State& state) { MeasureFftw(state, *original, *peer); });
    }
}

} // namespace bench
