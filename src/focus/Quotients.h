// The division that ends the spatial filter: sums of products by the weights that lie inside the picture.
#pragma once

#include "ConvolutionRows.h"
#include "QuantisedKernel.h"

#include <array>
#include <cstdint>
#include <vector>

namespace focus {

/// Divides the sums of a picture's samples, a piece of a row at a time. Away from the left and right edges one divisor
/// serves the whole piece.
class Quotients {
public:
    /// For pieces of at most `samples` samples of a picture of `width` by `height` pixels, each of `step` samples. The
    /// kernel must outlive the object.
    Quotients(const QuantisedKernel& kernel, int width, int height, int step, int samples);

    /// Stores the quotients of samples x .. x + count - 1 of row y, truncated toward zero and saturated to 0..255.
    void Store(const std::int32_t* sums, int x, int y, int count, std::uint8_t* samples);

private:
    const QuantisedKernel& m_Kernel;
    int m_Width;
    int m_Height;
    int m_Step;
    std::vector<double>
        m_Reciprocals;            // of the last piece, mostly shared by those below it; a single one if it is interior
    std::array<int, 3> m_Known{}; // first sample of that piece, -1 if it is interior, and the kernel rows that weigh
    const ConvolutionRows& m_Rows = ActiveConvolutionRows();
};

/// A factor r such that n * r, truncated toward zero, is the integer quotient n / divisor for every 32-bit n: the
/// nearest double of 1/divisor, raised by 2^-50 of itself so that exact multiples never fall short. The error stays
/// below 2^31 * 2^-49 / |divisor| and so below the distance to the next multiple. A divisor of 0 gives 0.
double Reciprocal(std::int32_t divisor);

} // namespace focus
