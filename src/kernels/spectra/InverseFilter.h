// Restores planes by a spectrum, with few bytes moved: pixels are widened and spectra multiplied a few rows ahead of
// the transform along the rows.
#pragma once

#include "claribox/DFT_Buffer.h"
#include "kernels/spectra/RowColumnTransform.h"

namespace kernels {

/// Filters planes of one size, one after the other, in one working spectrum.
class InverseFilter {
public:
    /// For planes of `width` by `height` bytes, 1 or more each.
    InverseFilter(int width, int height);

    /// Takes the next row of a plane, `width` bytes.
    void Take(const unsigned char* row);

    /// After the last row: filters by `otf`, of the plane's size, and stores the plane, tightly packed. A new plane may
    /// follow.
    void Restore(const ChComplex* otf, unsigned char* plane);

private:
    int m_Width;
    int m_Height;
    int m_Block; // rows that go through the transform at once
    int m_Taken = 0;
    RowColumnTransform m_Transform;
    DFT_Buffer m_Work;
};

} // namespace kernels
