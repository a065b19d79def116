#include "claribox/ChFunctions.h"

#include <cmath>

void ChMakeGaussianPSF(ChMatrix<float>& psf, int rows, int cols, double sigma) {
    psf.Create(rows, cols);
    const double k = std::log(2.0) / (sigma * sigma);
    // On an element for an odd size, between two for an even one.
    const double centreRow = (rows - 1.0) * 0.5;
    const double centreCol = (cols - 1.0) * 0.5;
    for (int i = 0; i < rows; ++i) {
        for (int j = 0; j < cols; ++j) {
            const double dx = j - centreCol;
            const double dy = i - centreRow;
            psf.At(i, j) = static_cast<float>(std::exp((dx * dx + dy * dy) * -k));
        }
    }
}
