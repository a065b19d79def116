// The kernels that the spatial filter is tried with.
#pragma once

#include <claribox/ChMatrix.h>

#include <string>
#include <vector>

struct TestKernel {
    std::string name;
    ChMatrix<float> matrix;
};

/// The kernel of `CImageFocus::Blur` at `radius`.
ChMatrix<float> BlurKernel(int radius);

/// The kernel of `CImageFocus::MotionBlur`.
ChMatrix<float> MotionKernel(int length, int degree);

/// The kernel of `CImageFocus::DeBlur` at `radius`, 1..10.
ChMatrix<float> DeBlurKernel(int radius);

/// A kernel of `coefficients` in 65536ths, row after row.
ChMatrix<float> FixedPointKernel(int rows, int cols, const std::vector<int>& coefficients);

/// Noise factor that `DeBlur` stores at `radius`, 0..10.
float DeconvNoise(int radius);

/// The kernels of the three operations in all sizes, and kernels made to reach every form of the filter and its limits.
/// Each has a defined result at every position in every picture.
std::vector<TestKernel> AllTestKernels();
