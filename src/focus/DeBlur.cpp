// Sharpens an out-of-focus picture with a spatial restoration kernel.
#include <claribox/CImageFocus.h>
#include <claribox/ChFunctions.h>

#include "PlaneSet.h"
#include "PlaneWorkers.h"
#include "processor/ProcessorCensus.h"

#include <algorithm>
#include <initializer_list>

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

void CImageFocus::DeBlur(unsigned char* pixels, FoPixelFmt format, int pitch) {
    m_Radius = std::clamp(m_Radius, 1, FoMaxDeBlurRadius);
    focus::FoPlaneSet planes(m_Width, m_Height);
    planes.Split(pixels, format, pitch);
    if (CensusThreadsPerCore > 1 || CensusPackages > 1 || CensusCoresPerPackage > 1) {
        DeBlur_Deconv_MT(planes.First(), planes.Second(), planes.Third());
    } else {
        DeBlur_Deconv(planes.First(), planes.Second(), planes.Third());
    }
    planes.Merge(pixels, format, pitch);
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
