#include "claribox/ChFunctions.h"
#include "kernels/numbers/DefaultFloatingMode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <cstdint>
#include <vector>

namespace {

ChMatrix<float> Disk(int size, double radius) {
    ChMatrix<float> psf;
    ChMakeCirclePSF(psf, size, radius);
    return psf;
}

/// As far from any symmetry as can be.
ChMatrix<float> Lopsided(int size) {
    ChMatrix<float> psf(size, size);
    for (int k = 0; k < size * size; ++k) {
        psf.m_Data[k] = static_cast<float>(k % 7) / 16.0f;
    }
    return psf;
}

/// Sums over all elements (i, j) of `psf` f(i, j) times the element.
double Weighted(const ChMatrix<float>& psf, auto f) {
    double sum = 0.0;
    for (int i = 0; i < psf.m_Rows; ++i) {
        for (int j = 0; j < psf.m_Cols; ++j) {
            sum += static_cast<double>(psf.At(i, j)) * f(i, j);
        }
    }
    return sum;
}

/// The cross-correlation of sharp and blurred picture at (y, x), for a model picture without bounds.
double Cross(const ChMatrix<float>& psf, double a, int y, int x) {
    const int h = psf.m_Rows / 2;
    return Weighted(psf, [&](int i, int j) { return std::pow(a, std::hypot(y + i - h, x + j - h)); });
}

std::uint16_t X87ControlWord() {
    std::uint16_t word = 0;
#if defined(__i386__) || defined(__x86_64__)
    __asm__ volatile("fnstcw %0" : "=m"(word));
#endif
    return word;
}

} // namespace

// A lopsided blur tells the order and the signs of all indices apart. Its weights come from a transcription of the
// steps into Python, with sums rounded to float and an elimination in double precision.
TEST(DeconvMatrixTest, Examples) {
    const struct {
        ChMatrix<float> psf;
        float noise;
        std::vector<float> octant; // by offset from the centre: (0, 0), (1, 0), (1, 1), (2, 0), (2, 1), ...
        float tolerance = 5.1e-5f;
        double sum = NAN; // where told
    } rows[] = {
        {Disk(1, 0.0), 0.0f, {1.0f}},
        {Disk(1, 0.0), 0.25f, {0.8f}}, // v / (v v + b)
        {Disk(3, 0.66), 0.01f, {1.3550f, -0.1063f, 0.0164f}, 5.1e-5f, 0.9956},
        {Disk(5, 1.32), 0.1f, {0.4455f, 0.2958f, 0.0442f, -0.0919f, -0.0709f, 0.0129f}},
        {Disk(11, 3.3), 0.24f, {}, 5.1e-5f, 0.8339},
        {Lopsided(2), 0.1f, {}},
        {Lopsided(3), 0.1f, {0.455382f, 0.157773f, -0.0587622f}, 1e-5f},
        // So badly conditioned that float sums in another order move the weights by 1e-3.
        {Lopsided(6),
         0.1f,
         {-12.2097063f, 6.06038761f, -5.16569662f, 1.33243728f, 4.63393545f, -15.0265837f, -5.79853153f, 2.67021441f,
          5.97660112f, -4.87028408f},
         1e-5f},
        {Lopsided(9), 0.1f, {}},
    };
    for (const auto& row : rows) {
        const int size = row.psf.m_Rows;
        const int h = size / 2;
        SCOPED_TRACE(testing::Message() << "size " << size << ", noise " << row.noise);
        ChMatrix<float> psf(row.psf);
        ChMakeDeconvMatrix(psf, 0.5f, row.noise);
        ASSERT_EQ(psf.m_Rows, size);
        EXPECT_TRUE(std::isnan(row.sum) || std::fabs(Weighted(psf, [](int, int) { return 1.0; }) - row.sum) < 5.1e-5);
        std::size_t next = 0;
        for (int u = 0; next < row.octant.size(); ++u) {
            for (int v = 0; v <= u; ++v) {
                EXPECT_NEAR(psf.At(h - u, h - v), row.octant[next++], row.tolerance) << u << ", " << v;
            }
        }
        // The kernel has the symmetries of the square.
        for (int i = 0; i < size; ++i) {
            for (int j = 0; j < size; ++j) {
                EXPECT_TRUE(std::isfinite(psf.At(i, j)));
                EXPECT_EQ(psf.At(i, j), psf.At(j, i)) << i << ", " << j;
                if (2 * h - i < size) { // of an even size the first row and column have no mirror image
                    EXPECT_EQ(psf.At(i, j), psf.At(2 * h - i, j)) << i << ", " << j;
                }
            }
        }
    }
}

// The kernel of a symmetric blur satisfies the normal equations at every offset of the square, not only at those of
// the octant that was solved for. Their coefficients are taken here from the model itself, in double precision.
TEST(DeconvMatrixTest, SolvesTheNormalEquationsOfTheWholeSquare) {
    for (const int h : {1, 2, 4}) {
        constexpr double a = 0.5;
        constexpr float noise = 0.0625f;
        const ChMatrix<float> psf = Disk(2 * h + 1, 0.66 * h);
        ChMatrix<float> kernel(psf);
        ChMakeDeconvMatrix(kernel, static_cast<float>(a), noise);
        ChMatrix<double> automatic(4 * h + 1, 4 * h + 1);
        for (int y = -2 * h; y <= 2 * h; ++y) {
            for (int x = -2 * h; x <= 2 * h; ++x) {
                automatic.At(2 * h + y, 2 * h + x) =
                    Weighted(psf, [&](int i, int j) { return Cross(psf, a, y + i - h, x + j - h); });
            }
        }
        for (int u = -h; u <= h; ++u) {
            for (int v = -h; v <= h; ++v) {
                const double left =
                    Weighted(kernel, [&](int i, int j) { return automatic.At(3 * h + u - i, 3 * h + v - j); }) +
                    static_cast<double>(noise * kernel.At(h + u, h + v));
                EXPECT_NEAR(left, Cross(psf, a, u, v), 2e-6) << "h " << h << " at " << u << ", " << v; // float sums
            }
        }
    }
}

TEST(DeconvMatrixTest, ASingularSystemGivesTheRightHandSide) {
    ChMatrix<float> psf(5, 5);
    psf.Zero();
    ChMakeDeconvMatrix(psf, 0.5f, 0.0f);
    EXPECT_EQ(std::count(psf.m_Data, psf.m_Data + psf.Count(), 0.0f), 25);
    // Fully correlated points make all equations of a sharp kernel the same, with 1 on the right.
    psf = Disk(3, 0.0);
    ChMakeDeconvMatrix(psf, 1.0f, 0.0f);
    EXPECT_EQ(std::count(psf.m_Data, psf.m_Data + psf.Count(), 1.0f), 9);
    psf.Create(0, 0);
    ChMakeDeconvMatrix(psf, 0.5f, 0.1f);
    EXPECT_EQ(psf.Count(), 0u);
}

TEST(DeconvMatrixTest, SolvesInTheDefaultModeAndBringsTheCallersBack) {
    std::fenv_t before;
    std::fegetenv(&before);
    std::fesetround(FE_UPWARD);
#if defined(__i386__) || defined(__x86_64__)
    const std::uint16_t callers = 0x0A7F; // upward, double precision
    __asm__ volatile("fldcw %0" : : "m"(callers));
#endif
    const std::uint16_t word = X87ControlWord();
    {
        const kernels::DefaultFloatingMode mode;
        EXPECT_EQ(std::fegetround(), FE_TONEAREST);
#if defined(__i386__) || defined(__x86_64__)
        EXPECT_EQ(X87ControlWord(), 0x037F);
#endif
    }
    EXPECT_EQ(X87ControlWord(), word);
    ChMatrix<float> psf = Disk(3, 0.66);
    ChMakeDeconvMatrix(psf, 0.5f, 0.01f);
    EXPECT_EQ(X87ControlWord(), word);
    EXPECT_EQ(std::fegetround(), FE_UPWARD);
    std::fesetenv(&before);
}
