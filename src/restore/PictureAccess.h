// The samples of a host's picture as floats, and back.
#pragma once

#include <claribox/Restore.h>

#include <cstdint>
#include <vector>

namespace restore {

/// Throws `std::invalid_argument` for a view that cannot be.
void Check(const claribox::PictureView& picture);

/// Channels that are looked at: 1 or 3.
inline int Colours(const claribox::PictureView& picture) {
    return picture.channels == 1 ? 1 : 3;
}

int SampleBytes(claribox::SampleType type);
double WhiteLevel(claribox::SampleType type);

/// The least variance that noise can have: of integers that of their rounding, 1/12.
double LeastVariance(claribox::SampleType type);

/// Columns left .. left + count - 1 of row y to `samples`, an array for red, green and blue, or for grey.
void ReadRow(const claribox::PictureView& picture, int y, int left, int count, float* const (&samples)[3]);

/// The way back: rounded to nearest and limited to black and white in pictures of integers; alpha stays.
void WriteRow(const claribox::PictureView& picture, int y, int left, int count, const float* const (&samples)[3]);

/// A picture of the same kind and content, tightly packed in memory of its own.
class PictureCopy {
public:
    explicit PictureCopy(const claribox::PictureView& picture);
    const claribox::PictureView& View() const { return m_View; }
    void CopyTo(const claribox::PictureView& picture) const;

private:
    std::size_t RowBytes() const { return static_cast<std::size_t>(m_View.rowBytes); }

    std::vector<std::uint8_t> m_Bytes;
    claribox::PictureView m_View;
};

} // namespace restore
