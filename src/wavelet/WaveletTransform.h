// Multi-level two-dimensional wavelet transform of float planes of any size (S. Mallat's pyramid, 1989).
#pragma once

#include "WaveletFilterSet.h"

/// Decomposes a plane and rebuilds it, with the four filters of one set, which must outlive the transform. Holds no
/// state that changes: any number of threads may use one transform. Nothing fails but the global `new`.
///
/// A level turns the top left h(k-1) by v(k-1) corner of the array, h(k) = (h(k-1) + 1) / 2 and v(k) likewise, into
///
///     | low in both        | high in x, low in y |   columns 0 .. h(k)-1 | h(k) .. h(k-1)-1
///     | low in x, high in y| high in both        |   rows    0 .. v(k)-1 / v(k) .. v(k-1)-1
///
/// and the next level goes on in its first part. All parts keep the stride of the plane.
class WaveletTransform {
public:
    explicit WaveletTransform(const WaveletFilterSet& set);

    /// Transforms width * height floats of `input` into `output`, another array, through `levels` levels; 0 copies.
    /// `extension` is 0 for periodic lines, -1 for the choice of the set, 1 or any other value for mirrored ones. Rows
    /// go first. With mirrored lines a level that starts from 2 samples or fewer in a direction prints two warnings and
    /// an error and goes on all the same. Needs about ten rows of each level as working memory, below 2 MiB up to 16000
    /// columns; where lines repeat, whole levels.
    void Forward2D(const float* input, float* output, int width, int height, int levels, int extension) const;

    /// The inverse: columns first, from the deepest level out. `levels` must be at least 1. Exact up to the rounding of
    /// floats where the arguments equal those of the forward call.
    void Inverse2D(const float* input, float* output, int width, int height, int levels, int extension) const;

    /// One line. `in` and `out` hold size + 2 * margin floats; the samples stand from index `margin` on, and so does
    /// the result: (size + 1) / 2 low samples and then the high ones. The margins of `in` are filled by its extension,
    /// those of `out` are left alone. `extension` is 0 or 1. Every product is added in more than single precision and
    /// each sum rounded to float at once, tap after tap.
    void ForwardLine(float* in, float* out, int size, int extension) const;

    /// The inverse line: low and high samples in, `size` samples out. `in` is left alone.
    void InverseLine(const float* in, float* out, int size, int extension) const;

    /// Continues `size` samples from index `margin` on by their mirror image into both margins. Kind 1 mirrors about
    /// the last sample, kind 2 about the gap behind it; a sign of -1 makes the image antisymmetric, with a 0 between
    /// line and image at an end of kind 1. Beyond one image the line repeats by its period; where that is not above 0,
    /// the rest of the margins stays. `buffer` holds size + 2 * margin floats.
    void ExtendMirror(float* buffer, int size, int leftKind, int rightKind, int sign) const;

    /// Repeats `size` samples from index `margin` on into both margins of a buffer of size + 2 * margin
    /// floats. The size is at least 1.
    void ExtendPeriodic(float* buffer, int size) const;

    WaveletFilter* lowAnalysis;
    WaveletFilter* highAnalysis;
    WaveletFilter* lowSynthesis;
    WaveletFilter* highSynthesis;
    int mirrorExtension; ///< nonzero: lines are mirrored by default
    int margin;          ///< samples a line buffer holds beyond either end: those of the longer analysis filter
};

/// Write "Warning: " or "Error: ", the text made as by `printf`, and a newline to standard output. They stop nothing.
void ReportWarning(const char* format, ...) __attribute__((format(printf, 1, 2)));
void ReportError(const char* format, ...) __attribute__((format(printf, 1, 2)));
