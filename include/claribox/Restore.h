// Restoration of photographs beyond the classic operations: noise measured, and removed by a sliding cosine transform.
// These functions check their arguments: what is wrong throws `std::invalid_argument`, which says what would be right.
#pragma once

#include "Export.h"

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <stdexcept>

namespace claribox {

/// What a sample is. The white level is 255, 65535 or 1.0, the black level 0; floats may lie outside.
enum class SampleType { UInt8, UInt16, Float32 };

/// The order of the colours in a pixel of three or four channels.
enum class ColourOrder { RGB, BGR };

/// A picture in the host's memory, which it owns.
struct PictureView {
    void* pixels; ///< the first channel of the top left pixel
    int width;    ///< in pixels, 16 or more, as is the height
    int height;
    int channels;            ///< 1 grey; 3 colours; 4 colours and alpha, which is never touched
    std::ptrdiff_t rowBytes; ///< from a row to the one below, a multiple of a sample's size; may be negative
    SampleType type = SampleType::UInt8;
    ColourOrder order = ColourOrder::RGB;
};

/// The noise of one channel: a sample of level x has the variance constant + proportional * x, in the samples' own
/// units (A. Foi et al., "Practical Poissonian-Gaussian noise modeling and fitting for single-image raw-data", 2008).
struct ChannelNoise {
    double constant = 0.0;
    double proportional = 0.0;

    double Variance(double level) const { return constant + proportional * level; }
};

/// The noise of a picture.
struct Noise {
    /// Red, green, blue; of a grey picture the first alone.
    std::array<ChannelNoise, 3> channels;

    /// How the noise is spread over frequencies, for luminance and for colour: the coefficient (u, v) of a cosine
    /// transform of 16 by 16 samples has the channels' variance times shape[band][max(u, v)]. All ones for white noise.
    /// Of what demosaicing and JPEG leave the channels tell the part at high frequencies, and the shape is above 1
    /// below.
    std::array<std::array<double, 16>, 2> shape;

    /// Noise of one standard deviation everywhere, in the samples' own units.
    CLARIBOX_API static Noise White(double sigma);
};

/// What MeasureNoise() found.
struct NoiseMeasurement {
    Noise noise;
    double sigma;                 ///< standard deviation at the picture's mean level, over all channels
    int left, top, right, bottom; ///< the smallest rectangle with all blocks it rests on; right and bottom exclusive
    int blocks;                   ///< their number
    double confidence;            ///< 0 to 1: the share of brightness levels whose flattest blocks agree with the fit
};

/// Measures the noise of a picture on its flattest parts (N. Ponomarenko et al., "An automated approach to noise
/// variance estimation", 2007; M. Colom and A. Buades, "Analysis and extension of the Ponomarenko et al. method",
/// 2013). `std::invalid_argument` for a view that cannot be.
CLARIBOX_API NoiseMeasurement MeasureNoise(const PictureView& picture);

struct DenoiseOptions {
    std::optional<Noise> noise = {}; ///< none: measured
    double strength = 1.0;           ///< 0 changes nothing, 1 removes all that is measured
    double luminance = 1.0;          ///< shares of the strength, 0 to 1
    double colour = 1.0;
    int threads = 0; ///< 0: one for each processor

    /// Called on the calling thread with the share done, 0 to 1; false cancels.
    std::function<bool(double done)> progress = {};
};

/// Thrown when the progress callback has cancelled.
class CLARIBOX_API Cancelled : public std::runtime_error {
public:
    Cancelled();
};

/// Removes noise in place: opponent colours, thresholds on a cosine transform of 16 by 16 samples at every second
/// pixel, then Wiener shrinkage by the first result (L. Yaroslavsky 1996; O. G. Guleryuz, "Weighted averaging for
/// denoising with overcomplete dictionaries", 2007; G. Yu and G. Sapiro, "DCT image denoising", 2011). The same bytes
/// for any number of threads and every vector class but the x87 unit. Working memory: 24 bytes a pixel and a second
/// copy of the picture. After an exception, `std::invalid_argument`, `std::bad_alloc` or `Cancelled`, the picture is as
/// it was.
CLARIBOX_API void Denoise(const PictureView& picture, const DenoiseOptions& options = {});

} // namespace claribox
