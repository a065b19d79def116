// The cosine transforms of blocks spread over a picture.
#pragma once

#include <claribox/Restore.h>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace restore {

/// What is kept of the transform of one block, orthonormal.
struct BlockSpectrum {
    int x; ///< of its first sample
    int y;
    float mean;
    float lowPower; ///< mean power of the coefficients (u, v) with 0 < u + v < 8
    float high[28]; ///< those with u + v >= 8
};

/// Blocks of one colour, 8 by 8 samples each, at every fourth sample or farther apart: about 60000 at most. Blocks that
/// touch black or white, where noise is cut off, are left out, as long as a tenth of them is left.
class BlockSpectra {
public:
    static constexpr int kSide = 8;

    BlockSpectra(const claribox::PictureView& picture, int colour);

    std::vector<BlockSpectrum>& Blocks() { return m_Blocks; }
    const std::vector<BlockSpectrum>& Blocks() const { return m_Blocks; }
    double MeanLevel() const { return m_MeanLevel; }

private:
    std::vector<BlockSpectrum> m_Blocks;
    double m_MeanLevel = 0.0;
};

/// Removes blocks with samples at black or white, where noise is cut off, as long as a tenth of them is left; `cut`
/// tells of how many samples.
template <typename Summary>
void RemoveCut(std::vector<Summary>& blocks, const std::vector<int>& cut) {
    std::vector<int> sorted = cut;
    const auto fewest = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 10);
    std::nth_element(sorted.begin(), fewest, sorted.end());
    std::size_t kept = 0;
    for (std::size_t k = 0; k < blocks.size(); ++k) {
        if (cut[k] <= *fewest) {
            blocks[kept++] = blocks[k];
        }
    }
    blocks.resize(kept);
}

} // namespace restore
