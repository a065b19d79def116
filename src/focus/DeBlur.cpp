// Sharpens an out-of-focus picture with a spatial restoration kernel.
#include <claribox/CImageFocus.h>
#include <claribox/ChFunctions.h>

#include "PlaneSet.h"
#include "PlaneWorkers.h"
#include "SpatialFilter.h"
#include "processor/ProcessorCensus.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <latch>

namespace focus {
namespace {

// Given: the noise power, relative to the picture, that the restoration assumes at each radius. Larger values blur the
// restored picture more. Entry 0 is never reached through DeBlur. FocusOperationsTest pins the table.
constexpr float DeconvNoiseByRadius[11] = {0.0f, 0.01f, 0.1f, 0.14f, 0.2f, 0.24f, 0.24f, 0.24f, 0.24f, 0.24f, 0.24f};

// Given: the correlation of neighbouring pixels in the picture before it was blurred. Pinned by FocusOperationsTest.
constexpr float kCorrelation = 0.5f;

// Stores in `noiseFactor` the one it uses.
void MakeRestorationKernel(ChMatrix<float>& kernel, int radius, float& noiseFactor) {
    ChMakeCirclePSF(kernel, 2 * radius + 1, 0.66 * radius); // given: a disc a third smaller than the radius set
    noiseFactor = DeconvNoiseByRadius[radius];
    ChMakeDeconvMatrix(kernel, kCorrelation, noiseFactor);
}

} // namespace
} // namespace focus

// What a worker of DeBlur_Deconv_MT receives.
struct FoConvolveJob {
    CImageFocus* self;
    unsigned char* plane;
    ChMatrix<float>* kernel; // shared by all workers
    std::int32_t stackOffset;

    void Run() const { self->ConvolvePlane(plane, *kernel); }
};

static void* ConvolveThreadEntry(void* job) {
    return focus::RunJob<FoConvolveJob>(job);
}

namespace {

// The planes of a picture, and the steps that no worker of DeBlur may begin before all have done with the one before.
struct SharedPlanes {
    const focus::PackedPicture& picture;
    focus::FoPlaneSet planes;
    std::latch split{3};
    std::latch filtered{3};
};

// What a worker of DeBlur receives: it filters a plane, and splits and merges a third of the rows.
struct DeBlurJob {
    FoConvolveJob filter; // which may call what is private
    SharedPlanes* shared;
    int third;
    std::int32_t stackOffset;

    void Run() const {
        Split();
        shared->split.arrive_and_wait();
        filter.Run();
        shared->filtered.arrive_and_wait();
        Merge();
    }

    // In the place of a worker that could not be started: its plane stays as it is split.
    void LeaveOut() const {
        Split();
        shared->split.count_down();
        shared->filtered.count_down();
    }

    void Split() const {
        const focus::PackedPicture& picture = shared->picture;
        shared->planes.Split(picture.pixels, picture.format, picture.pitch, FirstRow(third), FirstRow(third + 1));
    }
    void Merge() const {
        const focus::PackedPicture& picture = shared->picture;
        shared->planes.Merge(picture.pixels, picture.format, picture.pitch, FirstRow(third), FirstRow(third + 1));
    }

private:
    int FirstRow(int part) const { return static_cast<int>(std::int64_t{shared->picture.height} * part / 3); }
};

void* DeBlurThreadEntry(void* job) {
    return focus::RunJob<DeBlurJob>(job);
}

void DeBlurOnThreads(CImageFocus& focus, const focus::PackedPicture& picture, ChMatrix<float>& kernel) {
    if (!picture.HasPixels()) {
        return;
    }
    SharedPlanes shared{picture, {picture.width, picture.height}};
    DeBlurJob jobs[3] = {{{&focus, shared.planes.First(), &kernel, 0}, &shared, 0, 0},
                         {{&focus, shared.planes.Second(), &kernel, 0}, &shared, 1, 128},
                         {{&focus, shared.planes.Third(), &kernel, 0}, &shared, 2, 256}};
    bool started[3];
    focus::RunOnThreads(DeBlurThreadEntry, jobs, started);
    for (int k = 0; k < 3; ++k) {
        if (!started[k]) {
            jobs[k].Merge();
        }
    }
}

} // namespace

void CImageFocus::DeBlur(unsigned char* pixels, FoPixelFmt format, int pitch) {
    m_Radius = std::clamp(m_Radius, 1, FoMaxDeBlurRadius);
    ChMatrix<float> kernel;
    focus::MakeRestorationKernel(kernel, m_Radius, m_NoiseFactor);
    const focus::PackedPicture picture = {pixels, format, pitch, m_Width, m_Height};
    if (CensusThreadsPerCore > 1 || CensusPackages > 1 || CensusCoresPerPackage > 1) {
        DeBlurOnThreads(*this, picture, kernel);
    } else {
        focus::ConvolvePixels(picture, kernel);
    }
}

void CImageFocus::DeBlur_Deconv(unsigned char* first, unsigned char* second, unsigned char* third) {
    ChMatrix<float> kernel;
    focus::MakeRestorationKernel(kernel, m_Radius, m_NoiseFactor);
    for (unsigned char* const plane : {first, second, third}) {
        ConvolvePlane(plane, kernel);
    }
}

void CImageFocus::DeBlur_Deconv_MT(unsigned char* first, unsigned char* second, unsigned char* third) {
    ChMatrix<float> kernel;
    focus::MakeRestorationKernel(kernel, m_Radius, m_NoiseFactor);
    FoConvolveJob jobs[3] = {{this, first, &kernel, 0}, {this, second, &kernel, 128}, {this, third, &kernel, 256}};
    focus::RunOnThreads(ConvolveThreadEntry, jobs);
}
