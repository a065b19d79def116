// How noisy a picture is where it is smoothest.
#pragma once

#include <vector>

namespace cli {

/// The standard deviation of the noise of a luminance plane of at least 18 by 18 samples, in grey levels: the mean
/// absolute response of a mask that is blind to slopes (J. Immerkaer, "Fast Noise Variance Estimation", 1996), over
/// blocks of 16 by 16, at the tenth of the blocks where it is lowest, so that texture hardly counts. Blocks near black
/// and white, where noise is cut off, are left out if there are others.
double NoiseLevel(const std::vector<unsigned char>& plane, int width, int height);

} // namespace cli
