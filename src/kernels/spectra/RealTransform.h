// The two-dimensional transform of real planes, for half the work and half the memory of the complex one.
#pragma once

#include "claribox/KernelTable.h"
#include "kernels/spectra/RowColumnTransform.h"

#include <cstddef>
#include <vector>

namespace kernels {

/// Transforms planes of `width` by `height` floats, both 1 or more, to and from half spectra: of the `width` columns of
/// the spectrum the first width / 2 + 1, since element (x, y) is the conjugate of element (width - x, height - y).
/// Neither direction divides by the number of samples. The same bytes for every vector class but the x87 unit. Holds
/// working rows of half a megabyte or 16 rows; one thread at a time.
class RealTransform {
public:
    RealTransform(int width, int height);

    /// Elements of a row of the half spectrum, and of all `height` of them.
    int Columns() const { return m_Width / 2 + 1; }
    std::size_t Count() const { return static_cast<std::size_t>(Columns()) * static_cast<std::size_t>(m_Height); }

    /// X(u, v) = sum over x and y of plane(x, y) * exp(-2 pi i (u x / width + v y / height)). `plane` is only read.
    void Forward(const float* plane, ChComplex* spectrum);

    /// The inverse, times width * height. The spectrum is used up. Where real planes have real elements, imaginary
    /// parts do not count.
    void Backward(ChComplex* spectrum, float* plane);

private:
    // work(first row, pairs of rows) for each block, and work(upper row, whether there is a lower one, their complex
    // row) for each pair of a block.
    template <typename Work>
    void ForEachBlock(Work work) const;
    template <typename Work>
    void ForEachPair(int first, int count, Work work);

    int m_Width;
    int m_Height;
    int m_Pairs; ///< of rows in a block
    RowColumnTransform m_Transform;
    std::vector<ChComplex> m_Rows; ///< of a block
    std::vector<float> m_NoRow;    ///< beside the last row of an odd number
    std::vector<ChComplex> m_NoSpectrum;
};

} // namespace kernels
