// The working form of a picture: three byte planes for the length of one call.
#pragma once

#include <claribox/CImageFocus.h>

namespace focus {

/// Red, green and blue planes of width by height bytes, row y starting at byte y * width. The blocks come from
/// ChAlignedAlloc at alignment 64, and the planes start 0, 128 and 256 bytes into them, so that three workers on the
/// same row do not meet in the same cache sets. Contents are undefined until Split().
class FoPlaneSet {
public:
    FoPlaneSet(int width, int height);
    ~FoPlaneSet();
    FoPlaneSet(const FoPlaneSet&) = delete;
    FoPlaneSet& operator=(const FoPlaneSet&) = delete;

    /// Takes packed pixels apart; nothing happens for a format that is not known. With rows firstRow .. endRow - 1
    /// alone, several threads may each do a part.
    void Split(const unsigned char* pixels, FoPixelFmt format, int pitch) { Split(pixels, format, pitch, 0, m_Height); }
    void Split(const unsigned char* pixels, FoPixelFmt format, int pitch, int firstRow, int endRow);

    /// Writes the planes over packed pixels, all but the fourth byte; nothing happens for a format that is not known.
    void Merge(unsigned char* pixels, FoPixelFmt format, int pitch) const { Merge(pixels, format, pitch, 0, m_Height); }
    void Merge(unsigned char* pixels, FoPixelFmt format, int pitch, int firstRow, int endRow) const;

    /// First, second and third plane.
    unsigned char* const (&All() const)[3] { return m_Planes; }

    unsigned char* First() const { return m_Planes[0]; }
    unsigned char* Second() const { return m_Planes[1]; }
    unsigned char* Third() const { return m_Planes[2]; }

private:
    int m_Width;
    int m_Height;
    unsigned char* m_Planes[3];
};

} // namespace focus
