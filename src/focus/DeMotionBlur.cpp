// Undoes motion blur of known length and direction, in the frequency domain.
#include <claribox/CImageFocus.h>
#include <claribox/ChFunctions.h>

#include "ExtendedPicture.h"
#include "PlaneSet.h"
#include "PlaneWorkers.h"
#include "processor/ProcessorCensus.h"

namespace focus {
namespace {

// Given: the relative noise power that the restoration assumes. Pinned by
// InverseFilterTest.MotionDeblurEqualsItsDefinitionInBothForms.
constexpr float kNoise = 0.06f;

// The inverse spectrum of a motion kernel for the extended picture; three workers may read it at once. The kernel lives
// no longer than it is needed.
class MotionInverse {
public:
    MotionInverse(const ExtendedSize& extended, int length, int degree, float noise)
        : m_Spectrum(extended.Count(), 128) {
        ChMatrix<float> psf;
        ChMakeMotionPSF(psf, length, degree);
        MakeInverse(m_Spectrum, psf, extended, noise);
    }

    DFT_Buffer& Spectrum() { return m_Spectrum; }

private:
    DFT_Buffer m_Spectrum;
};

// An extended plane for the filter to work in.
class ScratchPlane {
public:
    explicit ScratchPlane(const ExtendedSize& extended)
        : m_Bytes(static_cast<unsigned char*>(ChAlignedAlloc(extended.Count(), 64))) {}
    ~ScratchPlane() { ChAlignedFree(m_Bytes); }
    ScratchPlane(const ScratchPlane&) = delete;
    ScratchPlane& operator=(const ScratchPlane&) = delete;

    unsigned char* Bytes() const { return m_Bytes; }

private:
    unsigned char* m_Bytes;
};

} // namespace
} // namespace focus

// What a worker of DeMotionBlur_MT receives.
struct FoInvFilterJob {
    CImageFocus* self;
    unsigned char* plane;
    unsigned char* scratch; // of the worker's own
    DFT_Buffer* inverse;    // shared by all workers
    std::int32_t stackOffset;

    void Run() const { self->InvFilter(plane, scratch, *inverse); }
};

static void* InvFilterThreadEntry(void* job) {
    return focus::RunJob<FoInvFilterJob>(job);
}

// Several logical processors on one core do not count, unlike in DeBlur. Required: DeMotionBlurThreads.CensusDecides.
void CImageFocus::DeMotionBlur(unsigned char* pixels, FoPixelFmt format, int pitch) {
    if (CensusPackages > 1 || CensusCoresPerPackage > 1) {
        DeMotionBlur_MT(pixels, format, pitch);
        return;
    }
    const focus::ExtendedSize extended(m_Width, m_Height);
    focus::FoPlaneSet planes(m_Width, m_Height);
    planes.Split(pixels, format, pitch);
    m_NoiseFactor = focus::kNoise;
    focus::MotionInverse inverse(extended, m_MotionLength, m_MotionDegree, m_NoiseFactor);
    if (extended.Count() > 0) {
        const focus::ScratchPlane scratch(extended);
        kernels::InverseFilter filter(extended.width, extended.height);
        for (unsigned char* const plane : planes.All()) {
            focus::FilterInMargin(filter, extended, plane, scratch.Bytes(), inverse.Spectrum());
        }
    }
    planes.Merge(pixels, format, pitch);
}

void CImageFocus::DeMotionBlur_MT(unsigned char* pixels, FoPixelFmt format, int pitch) {
    const focus::ExtendedSize extended(m_Width, m_Height);
    m_NoiseFactor = focus::kNoise;
    focus::FoPlaneSet planes(m_Width, m_Height);
    planes.Split(pixels, format, pitch);
    focus::MotionInverse inverse(extended, m_MotionLength, m_MotionDegree, m_NoiseFactor);
    {
        const focus::FoPlaneSet scratch(extended.width, extended.height); // staggered as the planes are
        DFT_Buffer* const spectrum = &inverse.Spectrum();
        FoInvFilterJob jobs[3] = {{this, planes.First(), scratch.First(), spectrum, 0},
                                  {this, planes.Second(), scratch.Second(), spectrum, 128},
                                  {this, planes.Third(), scratch.Third(), spectrum, 256}};
        focus::RunOnThreads(InvFilterThreadEntry, jobs);
    }
    planes.Merge(pixels, format, pitch);
}
