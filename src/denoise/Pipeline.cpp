// The denoiser's two operations on a picture, and the conversion of pixels to floats and back.
#include <claribox/CImageDenoiser.h>

#include "CoefficientShaping.h"
#include "Constants.h"
#include "NoiseEstimate.h"
#include "SampleRows.h"
#include "memory/HugePages.h"
#include "wavelet/LevelStreams.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace {

constexpr int kExtensionOfSet = -1;

/// A plane of floats, uninitialised: every element is written before it is read, and a fresh page is best touched once.
std::unique_ptr<float[]> NewPlane(std::ptrdiff_t samples) {
    std::unique_ptr<float[]> plane(new float[static_cast<std::size_t>(samples)]);
    memory::AdviseHugePages(plane.get(), static_cast<std::size_t>(samples) * sizeof(float));
    return plane;
}

std::ptrdiff_t Samples(int width, int height) {
    return static_cast<std::ptrdiff_t>(width) * height;
}

} // namespace

void CImageDenoiser::Denoise_YUV(unsigned char* y, unsigned char* u, unsigned char* v) {
    const std::unique_ptr<float[]> coefficients = NewPlane(Samples(m_Width, m_Height));
    if (m_AutoMeasure) {
        _probe_region(y);
        // Where nothing was found, the square is that of an earlier picture, which may have been larger.
        if (!denoise::EndsInside(m_Width, m_Height, {m_EstLeft, m_EstTop})) {
            m_EstLeft = m_EstTop = 0;
        }
        m_Threshold = _estimate_noise(y);
    }
    const WaveletTransform transform(FilterSetDenoise);
    const denoise::ShrinkingRule rule = {m_Width, m_Height, m_ThresholdType, m_Threshold,
                                         m_Threshold * denoise::kMiddleFactor};
    const denoise::SampleRows& functions = denoise::ActiveSampleRows();
    const auto row = [&](int r) { return y + static_cast<std::ptrdiff_t>(r) * m_Width; };
    wavelet::ForwardStream forward(transform, coefficients.get(), m_Width, m_Height, m_Levels, kExtensionOfSet);
    for (int r = 0; r < m_Height; ++r) {
        functions.Load(row(r), forward.NextRow(), m_Width);
        forward.Take();
    }
    // The first level's band of high frequency in both directions loses its impulses before it is shrunk. Each sample
    // waits for those above it, and the first row for the last one of the band above: no row can do so as it is made.
    _smooth_coeff_rect(coefficients.get(), 1, 50, m_Width / 2, m_Height / 2, m_Width / 2, m_Height / 2);
    wavelet::InverseStream inverse(
        transform, coefficients.get(), m_Width, m_Height, m_Levels, kExtensionOfSet,
        [&](int r, int begin, int end, float* values) { denoise::ShrinkHighAndMiddle(rule, r, begin, end, values); });
    std::vector<float> samples(static_cast<std::size_t>(m_Width));
    for (int r = 0; r < m_Height; ++r) {
        inverse.NextRow(samples.data());
        functions.Restore(samples.data(), row(r), m_Width);
    }
    _smooth_plane(u, 1, 50);
    _smooth_plane(v, 1, 50);
}

// Empty on purpose: the planes of this class are luminance and chrominance.
void CImageDenoiser::Denoise_RGB(unsigned char*, unsigned char*, unsigned char*) {}

void CImageDenoiser::ShowFreqBand(unsigned char* plane, int band) {
    const std::unique_ptr<float[]> spatial = NewPlane(Samples(m_Width, m_Height));
    const std::unique_ptr<float[]> coefficients = NewPlane(Samples(m_Width, m_Height));
    const WaveletTransform transform(FilterSetDenoise);
    _load_pixel(spatial.get(), plane);
    transform.Forward2D(spatial.get(), coefficients.get(), m_Width, m_Height, m_Levels, kExtensionOfSet);
    _only_one_band(coefficients.get(), band);
    transform.Inverse2D(coefficients.get(), spatial.get(), m_Width, m_Height, m_Levels, kExtensionOfSet);
    _restore_pixel(spatial.get(), plane);
}

void CImageDenoiser::_load_pixel(float* dst, unsigned char* src) {
    denoise::ActiveSampleRows().Load(src, dst, Samples(m_Width, m_Height));
}

void CImageDenoiser::_restore_pixel(float* src, unsigned char* dst) {
    denoise::ActiveSampleRows().Restore(src, dst, Samples(m_Width, m_Height));
}
