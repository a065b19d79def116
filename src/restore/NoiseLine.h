// The variance of noise over the level, as a straight line through what the flattest blocks of each level show.
#pragma once

#include "restore/BlockSpectra.h"

#include <vector>

namespace restore {

class NoiseLine {
public:
    NoiseLine(const BlockSpectra& blocks, double white);

    const claribox::ChannelNoise& Noise() const { return m_Noise; }

    /// The share of levels whose variance is within a fifth of the line.
    double Agreement() const { return m_Agreement; }

    /// The flattest blocks of all levels that agree; they belong to the BlockSpectra.
    const std::vector<const BlockSpectrum*>& Blocks() const { return m_Blocks; }

private:
    claribox::ChannelNoise m_Noise;
    double m_Agreement = 0.0;
    std::vector<const BlockSpectrum*> m_Blocks;
};

} // namespace restore
