// The denoiser's two operations on a picture, and the conversion of pixels to floats and back.
#include <claribox/CImageDenoiser.h>

#include "Constants.h"
#include "NoiseEstimate.h"
#include "wavelet/WaveletTransform.h"

#include <cstddef>
#include <memory>

namespace {

constexpr int kExtensionOfSet = -1;

// Uninitialised: every element is written before it is read, and a fresh page is best touched once.
std::unique_ptr<float[]> NewPlane(std::size_t samples) {
    return std::unique_ptr<float[]>(new float[samples]);
}

std::size_t Samples(int width, int height) {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

} // namespace

void CImageDenoiser::Denoise_YUV(unsigned char* y, unsigned char* u, unsigned char* v) {
    const std::unique_ptr<float[]> spatial = NewPlane(Samples(m_Width, m_Height));
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
    _load_pixel(spatial.get(), y);
    transform.Forward2D(spatial.get(), coefficients.get(), m_Width, m_Height, m_Levels, kExtensionOfSet);
    // The first level's band of high frequency in both directions loses its impulses before it is shrunk.
    _smooth_coeff_rect(coefficients.get(), 1, 50, m_Width / 2, m_Height / 2, m_Width / 2, m_Height / 2);
    _filter_high(coefficients.get(), m_Threshold);
    _filter_middle(coefficients.get(), m_Threshold * denoise::kMiddleFactor);
    transform.Inverse2D(coefficients.get(), spatial.get(), m_Width, m_Height, m_Levels, kExtensionOfSet);
    _restore_pixel(spatial.get(), y);
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
    const std::size_t count = Samples(m_Width, m_Height);
    for (std::size_t i = 0; i < count; ++i) {
        dst[i] = src[i];
    }
}

// Limits the floats in place as well. What lies above 255 is set to 254.5, and an unordered value counts as below 0.
void CImageDenoiser::_restore_pixel(float* src, unsigned char* dst) {
    const std::size_t count = Samples(m_Width, m_Height);
    float* __restrict const values = src;
    unsigned char* __restrict const pixels = dst;
    for (std::size_t i = 0; i < count; ++i) {
        const float value = values[i];
        const float positive = value > 0.0f ? value : 0.0f;
        const float limited = positive > 255.0f ? 254.5f : positive;
        values[i] = limited;
        pixels[i] = static_cast<unsigned char>(static_cast<int>(static_cast<double>(limited) + 0.5));
    }
}
