// A picture of what a direction guess is made from.
#pragma once

#include "MotionGuess.h"

#include <vips/vips8>

namespace cli {

/// Draws the costs over the guess's region of `picture`, as a closed curve around the middle: at each degree, counted
/// counter-clockwise from the right, it is the farther out the higher the cost. The cheapest degree is marked. Writes a
/// PNG to the open file `descriptor`; what fails throws `vips::VError`.
void WriteCostPlot(const vips::VImage& picture, const MotionGuess& guess, const DegreeCosts& costs, int descriptor);

} // namespace cli
