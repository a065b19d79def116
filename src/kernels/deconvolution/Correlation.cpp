#include "claribox/ChFunctions.h"

#include "kernels/numbers/WrappingArithmetic.h"

#include <cmath>

void ChMakeCorrecation(ChMatrix<float>& corr, int cols, int rows, double base, double offset) {
    corr.Create(rows, cols);
    const int centreRow = rows / 2;
    const int centreCol = cols / 2;
    for (int i = 0; i < rows; ++i) {
        for (int j = 0; j < cols; ++j) {
            const int dy = i - centreRow;
            const int dx = j - centreCol;
            const int squared = kernels::WrapAdd(kernels::WrapMultiply(dy, dy), kernels::WrapMultiply(dx, dx));
            const double distance = std::sqrt(static_cast<double>(squared));
            corr.At(i, j) = static_cast<float>(std::pow(base, distance) + offset);
        }
    }
}
