// The noise of a luminance plane, measured on its flattest square of medium brightness.
#pragma once

namespace denoise {

/// The top left corner of a square of kEstSide pixels a side.
struct SquareCorner {
    int left;
    int top;
};

/// The corner of the flattest square of a plane of `width` by `height` bytes, or `otherwise` where there is none of
/// medium brightness.
SquareCorner FlattestSquare(const unsigned char* plane, int width, int height, SquareCorner otherwise);

/// Whether the last pixel of the square is one of the plane's bytes. A square may still run over the end of a row into
/// the next one, and is measured so: required.
bool EndsInside(int width, int height, SquareCorner square);

/// The noise inside the square: for white noise 1.2 times its standard deviation, in grey levels.
float NoiseIn(const unsigned char* plane, int width, SquareCorner square);

} // namespace denoise
