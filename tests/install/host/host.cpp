// A host as an outsider writes it: knows the installed headers and the library, and nothing of the tree.
#include <claribox/CImageFocus.h>
#include <claribox/ChFunctions.h>

#include "readme_example.h"

#include <cmath>
#include <cstdio>
#include <vector>

namespace {

bool Expect(bool held, const char* what) {
    if (!held) {
        std::fprintf(stderr, "failed: %s\n", what);
    }
    return held;
}

// Beside an edge, sharpening overshoots: dark gets darker and bright brighter. Flat parts stay.
bool ReadmeExampleSharpensAnEdge() {
    constexpr int width = 40, height = 40, pitch = width * 3;
    std::vector<unsigned char> pixels(pitch * height);
    for (int k = 0; k < pitch * height; ++k) {
        pixels[k] = k % pitch < pitch / 2 ? 80 : 160;
    }
    sharpen(pixels.data(), width, height, pitch);
    const unsigned char* row = pixels.data() + 20 * pitch;
    return Expect(row[18 * 3] < 60 && row[21 * 3] > 180, "the README's example sharpens an edge") &&
           Expect(row[0] == 80 && row[39 * 3] == 160, "the README's example leaves flat parts alone");
}

// The matrix is compiled into the host, the builder into the library: both must see the same fields.
bool MatrixCrossesTheBorder() {
    ChMatrix<float> psf;
    ChMakeGaussianPSF(psf, 5, 7, 2.0);
    psf.Normalize();
    double sum = 0.0;
    for (std::size_t k = 0; k < psf.Count(); ++k) {
        sum += static_cast<double>(psf.m_Data[k]);
    }
    return Expect(psf.m_Rows == 5 && psf.m_Cols == 7, "the kernel has 5 rows and 7 columns") &&
           Expect(std::abs(sum - 1.0) < 1e-6, "a normalised kernel sums to 1");
}

} // namespace

int main() {
    const bool example = ReadmeExampleSharpensAnEdge();
    return MatrixCrossesTheBorder() && example ? 0 : 1;
}
