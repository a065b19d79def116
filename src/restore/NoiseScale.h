// A scale on which the noise of a picture has the standard deviation 1 at every level and in every colour, and colours
// apart from luminance.
#pragma once

#include <claribox/Restore.h>

namespace restore {

/// The variance-stabilising transform of one channel (F. J. Anscombe, 1948; for noise with a constant part J.-L.
/// Starck, F. Murtagh, A. Bijaoui, "Image Processing and Data Analysis", 1998), and its asymptotically unbiased
/// inverse.
class LevelScale {
public:
    /// `leastVariance`, above 0, is that of a channel without noise; levels lie between 0 and `white`.
    LevelScale(const claribox::ChannelNoise& noise, double white, double leastVariance);

    float Forward(float level) const;
    float Backward(float scaled) const;

private:
    float m_Gain;   // 0: the noise is the same at every level
    float m_Offset; // variance at level 0, or everywhere
    float m_Scale;
};

/// In place: red, green and blue to luminance, and two opponent colours, an orthonormal transform that keeps white
/// noise white; and back.
void ToOpponents(float* red, float* green, float* blue, int count);
void FromOpponents(float* first, float* second, float* third, int count);

} // namespace restore
