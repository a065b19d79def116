// Guesses the direction in which a picture was smeared: along it neighbouring pixels are most alike.
#include <claribox/CImageFocus.h>
#include <claribox/ChFunctions.h>

#include "EstRegion.h"
#include "Luminance.h"
#include "MotionCosts.h"

#include <algorithm>

int ChGuessMotionDirection(unsigned char* plane, int width, int, int left, int top, int right, int bottom) {
    const auto costs = focus::MotionCosts(plane, width, {left, top, right, bottom});
    return static_cast<int>(std::min_element(costs.begin(), costs.end()) - costs.begin()); // the first of equals
}

int CImageFocus::GuessMotionDegree(unsigned char* pixels, FoPixelFmt format, int pitch) {
    // Half size is picked, not filtered, and alike in both directions, so that angles stay.
    const int step = focus::PixelCount(m_Width, m_Height) < FoHalfSizePixels ? 1 : 2;
    const focus::LuminancePlane plane(pixels, format, pitch, m_Width, m_Height, step);
    Probe_Region(plane.Samples(), plane.Width(), plane.Height());
    focus::EstRect rect;
    GetEstRect(rect.left, rect.top, rect.right, rect.bottom);
    // Required: the rectangle comes from the full size, and may lie where an earlier picture had it. It may reach
    // beyond the plane, to the right, where rows run on into the next, and at the bottom, where the plane ends.
    // MotionGuess.OfPackedPixelsIsThatOfThePlainForm pins it.
    rect = focus::TrimBottom(rect, plane.Width(), plane.Height());
    m_GuessedDegree = ChGuessMotionDirection(plane.Samples(), plane.Width(), plane.Height(), rect.left, rect.top,
                                             rect.right, rect.bottom);
    return m_GuessedDegree;
}
