// Blur and deblur of a picture in the host's own memory.
#pragma once

#include "ChMatrix.h"
#include "DFT_Buffer.h"
#include "Export.h"

#include <cstdint>

/// Layout of one packed pixel. A pixel operation given any other value leaves the caller's pixels as they were.
enum FoPixelFmt : int {
    FoPixelFmt_BGR24 = 0,  ///< 3 bytes: blue, green, red
    FoPixelFmt_BGRX32 = 1, ///< 4 bytes: blue, green, red, and one that every operation leaves alone
};

// Limits and sizes of the operations, for hosts to check against: the library itself enforces the first alone.

/// The largest radius of `CImageFocus::DeBlur`, in pixels; larger ones are clamped to it. The normal equations of its
/// kernel grow with the fourth power of the radius, and the time to solve them with the sixth.
inline constexpr int FoMaxDeBlurRadius = 10;

/// The largest radius, in pixels, at which no sum of `CImageFocus::Blur` wraps whatever the picture: 16.16 weights,
/// the largest of them 1, times samples of 255 stay below 2^31. Above it bright areas may turn dark.
inline constexpr int FoMaxSafeBlurRadius = 5;

/// Pixels by which `CImageFocus::DeMotionBlur` extends a picture on each side before it transforms it. The motion
/// kernel, of side 2*length+1, must fit into the extended picture; of a longer one the library uses the middle alone.
inline constexpr int FoTransformMargin = 50;

/// Side in pixels of the square that `CImageFocus::GuessMotionDegree` estimates on.
inline constexpr int FoEstSize = 512;

/// Number of pixels from which on `CImageFocus::GuessMotionDegree` looks at every second row and column only. Above
/// it, but not at it, `GetEstRectActSize` doubles its coordinates.
inline constexpr int FoHalfSizePixels = 1700000;

/// The largest number of bytes of a packed picture, and of its three planes together: both are counted in 32 bits,
/// and up to 256 bytes stand in front of a plane. For larger pictures the counts wrap and too little is allocated.
inline constexpr std::int32_t FoMaxPictureBytes = INT32_MAX - 256;

/// Holds a picture size and the parameters of the focus operations, and no pixels.
///
/// Order of use: construct, `SetSize`, set parameters, call an operation; a new size may be set between calls. Setters
/// store what they are given without a test. Nothing is reported: sizes, pointers and parameters are the host's to
/// keep right. One object serves one thread at a time; separate objects may work at once.
///
/// All pixel operations share three arguments: `pixels`, the first byte of the top row, read and written back in
/// place; `format`; and `pitch`, the distance in bytes from one row to the next, which may be negative for pictures
/// stored bottom up. Padding between rows is never touched.
///
/// All working memory belongs to the call: 3 bytes a pixel for the planes, or 1 for `GuessMotionDegree`, and what the
/// kernel needs. Where memory runs out an operation faults or throws what the global `new` throws, with the caller's
/// pixels as they were; on a worker thread that throw ends the process. A worker thread that cannot be started leaves
/// its colour plane as it was, without a word. A host that cannot bear either makes sure of memory and threads first.
class CLARIBOX_API CImageFocus {
public:
    /// Radius 3, noise factor 0.01, motion length 15, motion degree 30. The size is unset.
    CImageFocus();
    CImageFocus(const CImageFocus& other);
    CImageFocus& operator=(const CImageFocus& other);
    virtual ~CImageFocus();

    /// Sets the picture size in pixels.
    void SetSize(int width, int height);

    /// Radius of the focus kernels in pixels: 1 or more for `Blur`; `DeBlur` clamps it to 1..`FoMaxDeBlurRadius`
    /// and stores that back.
    void SetRadius(int radius);
    int GetRadius() const;

    /// Each deblurring operation writes its own noise factor here before using it, so that a value set by the host
    /// reaches no arithmetic and only `GetNoiseFactor` shows it.
    void SetNoiseFactor(float noiseFactor);
    double GetNoiseFactor() const;

    /// Length of motion in pixels, 1 or more: not above the picture's smaller side for `MotionBlur`, and at most half
    /// of that side plus `FoTransformMargin` - 1 for `DeMotionBlur`.
    void SetMotionLength(int length);
    int GetMotionLength() const;

    /// Direction of motion in whole degrees, counter-clockwise from the right; -360 and above are reduced to a full
    /// turn.
    void SetMotionDegree(int degree);
    int GetMotionDegree() const;

    /// Blurs with a Gaussian of side 2*radius+1 that falls to one half at a distance of 2*radius. Above
    /// `FoMaxSafeBlurRadius`, bright areas wrap at 32 bits and turn dark.
    void Blur(unsigned char* pixels, FoPixelFmt format, int pitch);

    /// Smears along the set length and degree of motion.
    void MotionBlur(unsigned char* pixels, FoPixelFmt format, int pitch);

    /// Sharpens an out-of-focus picture by a spatial deconvolution kernel for a disc of 0.66*radius. Clamps the radius
    /// to 1..`FoMaxDeBlurRadius`, stores it back, and stores the noise factor it used. Runs a thread a colour plane
    /// where the machine has more than one processor; the bytes are the same either way if all three can be started.
    void DeBlur(unsigned char* pixels, FoPixelFmt format, int pitch);

    /// Undoes the set length and degree of motion in the frequency domain. Stores the noise factor it used. The motion
    /// kernel, of side 2*length+1, has to fit into the picture extended by `FoTransformMargin` on each side. Runs a
    /// thread a colour plane where the machine has more than one processor package or core; the bytes are the same
    /// either way if all three can be started. Takes 38 bytes a pixel of the extended picture, on one thread 20. A
    /// transform that finds no memory of its own is not reported: the picture is then undefined.
    void DeMotionBlur(unsigned char* pixels, FoPixelFmt format, int pitch);

    /// Guesses the direction of motion blur inside the picture's busiest square of `FoEstSize` pixels and moves the
    /// estimation region there; where no such square fits, the region stays as an earlier picture left it. From
    /// `FoHalfSizePixels` on it looks at every second row and column. Returns a degree from 0 to 359; does not set the
    /// motion degree. The pixels are only read.
    int GuessMotionDegree(unsigned char* pixels, FoPixelFmt format, int pitch);

    /// The estimation region in the coordinates of the plane that was looked at. `right` is left + `FoEstSize` in a
    /// picture wider than that, else its last column; `bottom` likewise. It may reach beyond the plane: of a picture
    /// looked at in half size, with a side below 520, or with the region of an earlier one.
    void GetEstRect(int& left, int& top, int& right, int& bottom) const;

    /// The same in the coordinates of the full picture: all four doubled above `FoHalfSizePixels`, with no bound by
    /// the picture's size. A picture of exactly that many pixels, though examined at half size, still reports the
    /// half-size coordinates: required (EstRectTest).
    void GetEstRectActSize(int& left, int& top, int& right, int& bottom) const;

private:
    friend struct FoConvolveJob;
    friend struct FoInvFilterJob;

    void ConvolvePlane(unsigned char* plane, ChMatrix<float>& kernel);
    void ConvolvePlane_Mask(unsigned char* plane, ChMatrix<float>& kernel, unsigned char* mask);
    void DeBlur_Deconv(unsigned char* first, unsigned char* second, unsigned char* third);
    void DeBlur_Deconv_MT(unsigned char* first, unsigned char* second, unsigned char* third);
    /// The deblurring of `DeBlur`, in the frequency domain and with the radius unclamped, on three planes of the
    /// picture's size. Stores a noise factor of 0.04.
    void DeBlur_Inv(unsigned char* first, unsigned char* second, unsigned char* third);
    /// Filters a plane of the picture's size by a spectrum of the extended size, which is only read. `scratch` has
    /// (width + 100) * (height + 100) bytes.
    void InvFilter(unsigned char* plane, unsigned char* scratch, DFT_Buffer& inverse);
    void DeMotionBlur_MT(unsigned char* pixels, FoPixelFmt format, int pitch);
    /// Moves the region's corner to the busiest square of a plane, to (0, 0) where the plane is not larger than it, or
    /// leaves it where no square fits.
    void Probe_Region(unsigned char* plane, int width, int height);
    /// Stores, for each sample, its distance from the mean of its 11 by 11 neighbours, or 0 below `threshold`. In the
    /// band of 5 at the edges the distance is the sample itself: required (EstRegionTest). `spare` is not read.
    void GetEdgeMap(unsigned char* plane, unsigned char* map, int spare, int threshold);
    /// Luminance of a red, a green and a blue plane; white becomes 254.
    void CvtToPlaneY(unsigned char* y, unsigned char* first, unsigned char* second, unsigned char* third);

    int m_Width = 0; // nothing to work on until SetSize
    int m_Height = 0;
    int m_Radius = 3;
    float m_NoiseFactor = 0.01f;
    float m_Correlation = 0.5f; // carried and copied; no operation reads it
    int m_MotionLength = 15;
    int m_MotionDegree = 30;
    int m_EstLeft = 0;
    int m_EstTop = 0;
    int m_EstSize = FoEstSize;
    int m_EstBlock = 8;
    int m_GuessedDegree = 0;
};
