// The noise of a picture, measured on its flattest blocks.
//
// Blocks of 8 by 8 samples are transformed by the cosine transform. Those with the least power at low frequencies have
// the least texture, and what they hold at high ones is noise (N. Ponomarenko et al., 2007). Done apart for several
// levels of brightness, that gives the variance over the level, to which a straight line is fitted; where a level has
// texture everywhere its variance is too large, and counts less.
#include <claribox/Restore.h>

#include "restore/BlockSpectra.h"
#include "restore/NoiseLine.h"
#include "restore/NoiseShape.h"
#include "restore/PictureAccess.h"

#include <algorithm>
#include <cmath>

namespace claribox {

NoiseMeasurement MeasureNoise(const PictureView& picture) {
    restore::Check(picture);
    const double white = restore::WhiteLevel(picture.type);
    NoiseMeasurement found{};
    found.noise = Noise::White(0.0);
    found.left = picture.width;
    found.top = picture.height;
    const int colours = restore::Colours(picture);
    double agreement = 0.0;
    double variance = 0.0;
    for (int colour = 0; colour < colours; ++colour) {
        const restore::BlockSpectra blocks(picture, colour);
        const restore::NoiseLine line(blocks, white);
        found.noise.channels.at(static_cast<std::size_t>(colour)) = line.Noise();
        variance += line.Noise().Variance(blocks.MeanLevel()) / colours;
        agreement += line.Agreement() / colours;
        for (const restore::BlockSpectrum* block : line.Blocks()) {
            found.left = std::min(found.left, block->x);
            found.top = std::min(found.top, block->y);
            found.right = std::max(found.right, block->x + restore::BlockSpectra::kSide);
            found.bottom = std::max(found.bottom, block->y + restore::BlockSpectra::kSide);
        }
        found.blocks += static_cast<int>(line.Blocks().size());
    }
    restore::MeasureShape(picture, found.noise);
    found.sigma = std::sqrt(variance);
    found.confidence = agreement;
    found.left = std::min(found.left, found.right);
    found.top = std::min(found.top, found.bottom);
    return found;
}

} // namespace claribox
