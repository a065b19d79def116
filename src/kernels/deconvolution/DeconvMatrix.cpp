// The finite Wiener filter of a blur kernel. The weights w minimise the mean square error between the sharp picture and
// the filtered blurred one, for a picture whose points correlate by a^distance and white noise of relative power b
// (N. Wiener, Extrapolation, Interpolation, and Smoothing of Stationary Time Series, 1949). All offsets from the centre
// that the symmetries of the square carry into each other share one weight, which leaves T = (h + 1)(h + 2) / 2
// unknowns for a kernel of half size h:
//
//     5 4 3 4 5     the pair index at h = 2, T = 6
//     4 2 1 2 4
//     3 1 0 1 3
//     4 2 1 2 4
//     5 4 3 4 5
#include "claribox/ChFunctions.h"

#include "kernels/numbers/DefaultFloatingMode.h"
#include "kernels/numbers/RoundToFloat.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

extern "C" {
// LAPACK: solves A X = B by LU factorisation with partial pivoting. Matrices are stored column after column; `a`
// and `ipiv` receive the factors, `b` the solution. A positive `info` means a singular matrix, and `b` is unchanged.
void dgesv_(const int* n, const int* nrhs, double* a, const int* lda, int* ipiv, double* b, const int* ldb, int* info);
}

using kernels::RoundToFloat;

namespace {

/// The unknown that the offset (u, v) from the centre shares.
int PairIndex(int u, int v) {
    const int m = std::max(std::abs(u), std::abs(v));
    const int n = std::min(std::abs(u), std::abs(v));
    return (m * m + m) / 2 + n;
}

/// Fills `normal`, made T by T: element (J, I) is the coefficient of unknown J in equation I. `blurred` is the
/// autocorrelation of the blurred picture, (4h + 1) square. The sums are required to be floats, rounded at each step;
/// DeconvMatrixTest.SolvesTheNormalEquationsOfTheWholeSquare pins it.
void BuildNormalMatrix(ChMatrix<float>& normal, const ChMatrix<float>& blurred, int half, float noise) {
    const int unknowns = PairIndex(half, half) + 1;
    normal.Create(unknowns, unknowns);
    normal.Zero();
    for (int u = 0; u <= half; ++u) {
        for (int v = 0; v <= u; ++v) {
            const int equation = PairIndex(u, v);
            for (int p = -half; p <= half; ++p) {
                for (int q = -half; q <= half; ++q) {
                    float& coefficient = normal.At(PairIndex(p, q), equation);
                    const float term = blurred.At(2 * half + u - p, 2 * half + v - q);
                    float sum = RoundToFloat(static_cast<double>(coefficient) + static_cast<double>(term));
                    if (p == u && q == v) {
                        sum = RoundToFloat(static_cast<double>(sum) + static_cast<double>(noise));
                    }
                    coefficient = sum;
                }
            }
        }
    }
}

/// Fills `right`, made T by 1, from the first octant of the cross-correlation of blurred and sharp picture, which is
/// (6h + 1) square.
void BuildRightSide(ChMatrix<float>& right, const ChMatrix<float>& cross, int half) {
    right.Create(PairIndex(half, half) + 1, 1);
    right.Zero();
    for (int u = 0; u <= half; ++u) {
        for (int v = 0; v <= u; ++v) {
            right.At(PairIndex(u, v), 0) = cross.At(3 * half + u, 3 * half + v);
        }
    }
}

/// Solves the normal equations and returns the weights, T by 1. `normal` goes to DGESV as it is: its element (J, I),
/// stored row after row, is element (I, J) of the column-major matrix, and row I of that is equation I.
ChMatrix<double> SolveWeights(const ChMatrix<float>& normal, const ChMatrix<float>& right) {
    ChMatrix<double> solution;
    ChMatrix<double> matrix;
    ChMatrixToDouble(solution, right);
    ChMatrixToDouble(matrix, normal);
    const std::unique_ptr<int[]> pivots(new int[static_cast<std::size_t>(matrix.m_Rows)]);
    // Ignored: a singular matrix is required to leave the right-hand side (DeconvMatrixTest pins it).
    int info = 0;
    const kernels::DefaultFloatingMode mode;
    dgesv_(&matrix.m_Rows, &right.m_Cols, matrix.m_Data, &matrix.m_Rows, pivots.get(), solution.m_Data, &right.m_Rows,
           &info);
    return solution;
}

} // namespace

void ChMakeDeconvMatrix(ChMatrix<float>& psf, float correlation, float noise) {
    const int size = psf.m_Rows;
    const int half = size / 2;
    const int side = 8 * half + 1;

    // Each crop cuts off the margin that the zero border of the correlation spoils.
    ChMatrix<float> cross;
    ChMakeCorrecation(cross, side, side, static_cast<double>(correlation), 0.0);
    cross.Correlate(psf);
    cross.Crop(half, half, 7 * half + 1, 7 * half + 1);
    ChMatrix<float> blurred(cross);
    blurred.Correlate(psf);
    blurred.Crop(half, half, 5 * half + 1, 5 * half + 1);

    ChMatrix<float> normal;
    ChMatrix<float> right;
    BuildNormalMatrix(normal, blurred, half, noise);
    BuildRightSide(right, cross, half);
    const ChMatrix<double> weights = SolveWeights(normal, right);

    psf.Create(size, size);
    for (int i = 0; i < size; ++i) {
        for (int j = 0; j < size; ++j) {
            psf.At(i, j) = static_cast<float>(weights.At(PairIndex(i - half, j - half), 0));
        }
    }
}
