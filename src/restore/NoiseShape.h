// How noise is spread over frequencies.
#pragma once

#include <claribox/Restore.h>

namespace restore {

/// Fills `noise.shape` for luminance and colour, and brings the channels' variances, measured at high frequencies, to
/// the mean over all.
void MeasureShape(const claribox::PictureView& picture, claribox::Noise& noise);

} // namespace restore
