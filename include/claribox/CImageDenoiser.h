// Removes noise from a picture in the host's own memory.
#pragma once

#include "Export.h"

/// Side in pixels of the square on which the noise is measured. The measurement of a plane with a smaller side reads
/// beyond its end; the library does not test it.
inline constexpr int DnEstSize = 96;

/// Smallest side in pixels at which three levels of wavelets leave a band worth the name. Below it the library prints
/// messages to standard output and goes on all the same.
inline constexpr int DnMinSide = 9;

/// Holds a plane size and the parameters of the denoiser, and no pixels.
///
/// A picture is three planes of `width` * `height` bytes each, tightly packed: luminance and two chrominance planes of
/// the same full size. Order of use: construct, `SetSize`, set parameters, call an operation; a new size may be set
/// between calls. Nothing is tested or reported: sizes and pointers are the host's to keep right. A side
/// below `DnMinSide` brings messages to standard output, and a plane with a side below `DnEstSize` must not be
/// measured. One object serves one thread at a time; separate objects may work at once.
class CLARIBOX_API CImageDenoiser {
public:
    /// Threshold 5, soft shrinkage, measured anew in each `Denoise_YUV`. The size is -1 by -1, which is no usable one.
    CImageDenoiser();
    CImageDenoiser(const CImageDenoiser& other);
    CImageDenoiser& operator=(const CImageDenoiser& other);
    virtual ~CImageDenoiser();

    /// Sets the size of the planes in pixels.
    void SetSize(int width, int height);

    /// Sets the threshold of the shrinkage, in grey levels of a wavelet coefficient. A `second` of exactly -1 also sets
    /// the second threshold, which is only reported, to 1.2 times `first`; any other value of it is dropped. While
    /// the measurement is on, `Denoise_YUV` overwrites the threshold.
    void SetThreshold(float first, float second);

    /// Reports the threshold in use, after a measurement the measured one, and the second threshold.
    void GetThreshold(float& first, float& second) const;

    /// The rule of shrinkage: 0 soft, 1 hard, 2 garrote; any other value shrinks nothing.
    void SetThresholdType(int type);

    /// Switches the measurement of the noise in each `Denoise_YUV` on or off.
    void SetAutoMeasure(bool on);

    /// Whether the measurement is on.
    bool IsAuto() const;

    /// Reports the square of `DnEstSize` pixels a side that the last measurement used, (0, 0, 96, 96) on a new object;
    /// right and bottom are exclusive. It stays where it was when a picture has no square of medium brightness, or goes
    /// back to (0, 0, 96, 96) where that would end behind the picture.
    void GetEstRect(int& left, int& top, int& right, int& bottom) const;

    /// Denoises in place: the luminance plane by shrinkage of its wavelet coefficients, the chrominance planes by a
    /// mean of like neighbours. With the measurement on, stores the measured threshold and its region. Takes 4 bytes
    /// a pixel and below 2 MiB of working memory. Throws what the global `new` throws where memory runs out; each
    /// plane is then either as it was or finished, and what was measured until then is stored.
    void Denoise_YUV(unsigned char* y, unsigned char* u, unsigned char* v);

    /// Touches nothing: red, green and blue are not what this class works on.
    void Denoise_RGB(unsigned char* r, unsigned char* g, unsigned char* b);

    /// Replaces a plane by what it holds in one range of frequencies: 0 the finest detail, 1 the middle, 2 the coarse
    /// rest; any other value keeps everything. Ranges without the coarse rest have a mean near 0, and
    /// only their positive swings show. Takes 8 bytes a pixel; exceptions as `Denoise_YUV`.
    void ShowFreqBand(unsigned char* plane, int band);

private:
    void _load_pixel(float* dst, unsigned char* src);
    void _restore_pixel(float* src, unsigned char* dst);
    void _probe_region(unsigned char* plane);
    float _estimate_noise(unsigned char* plane);
    void _coeff_thresholding(float& coefficient, float threshold);
    void _filter_all(float* coefficients, float threshold);
    void _filter_high(float* coefficients, float threshold);
    void _filter_middle(float* coefficients, float threshold);
    void _filter_low(float* coefficients, float threshold);
    void _only_one_band(float* coefficients, int band);
    void _smooth_coeff_rect(float* coefficients, int radius, int tolerance, int left, int top, int width, int height);
    void _smooth_plane(unsigned char* plane, int radius, int tolerance);

    int m_Width = -1;
    int m_Height = -1;
    int m_Levels = 3;
    int m_ThresholdType = 0;
    float m_Threshold = 5.0f;
    float m_ThresholdMiddle = 6.0f; // stored and reported, never applied
    bool m_AutoMeasure = true;
    int m_EstLeft = 0;
    int m_EstTop = 0;
};
