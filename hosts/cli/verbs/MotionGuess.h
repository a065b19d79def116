// The direction in which a picture was smeared, as the library guesses it, in the picture's own coordinates.
#pragma once

#include "PackedPixels.h"
#include "PictureShape.h"

#include <array>
#include <cstdint>
#include <string>

namespace cli {

/// Columns `left` up to and excluding `right`, rows `top` up to and excluding `bottom`.
struct Region {
    int left;
    int top;
    int right;
    int bottom;
};

struct MotionGuess {
    int degree; ///< 0 to 359, counter-clockwise from the right
    Region region;
    double milliseconds; ///< that the library took
};

/// The mean error in grey levels of predicting a pixel of the region along each of the 360 degrees.
using DegreeCosts = std::array<double, 360>;

/// Has the library look at the pixels. With `costs` it also fills in what the guess is
/// made from, outside the time measured.
MotionGuess GuessMotion(const PackedPixels& pixels, DegreeCosts* costs = nullptr);

/// "columns 0 to 511 and rows 8 to 519".
std::string Describe(const Region& region);

/// Bytes that the guess takes beside the picture.
std::int64_t GuessWorkingBytes(const PictureShape& shape);

/// Why no direction can be guessed from a picture of this shape; empty if it can.
std::string GuessMisfit(const PictureShape& shape);

} // namespace cli
