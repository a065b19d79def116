// The frequency road from its definition, in long double: slow and obviously correct. Sizes are those of the plane
// given; the library's own code includes nothing of it.
#pragma once

#include "reference/dft_slow.h"

#include <claribox/ChMatrix.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace spectrum_slow {

using dft_slow::Wide;
using dft_slow::WideLine;
using Plane = std::vector<unsigned char>;

inline std::size_t Count(int width, int height) {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

/// The plane with a margin of `pad` pixels, each a copy of the nearest one inside.
inline Plane Extend(const Plane& plane, int width, int height, int pad) {
    Plane extended;
    for (int y = -pad; y < height + pad; ++y) {
        for (int x = -pad; x < width + pad; ++x) {
            const int row = std::clamp(y, 0, height - 1);
            extended.push_back(plane[Count(width, row) + static_cast<std::size_t>(std::clamp(x, 0, width - 1))]);
        }
    }
    return extended;
}

inline WideLine Transform(const WideLine& x, int width, int height, int sign) {
    return dft_slow::TransformNd(x, {height, width}, sign);
}

/// Transfer function of a kernel around its element (rows/2, cols/2). Elements more than half the plane away from
/// there have no place.
inline WideLine TransferFunction(const ChMatrix<float>& psf, int width, int height) {
    WideLine placed(Count(width, height));
    for (int i = 0; i < psf.m_Rows; ++i) {
        for (int j = 0; j < psf.m_Cols; ++j) {
            const int y = i - psf.m_Rows / 2;
            const int x = j - psf.m_Cols / 2;
            if (y >= -(height / 2) && y < height - height / 2 && x >= -(width / 2) && x < width - width / 2) {
                placed[Count(width, (y + height) % height) + static_cast<std::size_t>((x + width) % width)] =
                    static_cast<long double>(psf.At(i, j));
            }
        }
    }
    return Transform(placed, width, height, -1);
}

inline WideLine Inverse(WideLine otf, float noise) {
    for (Wide& h : otf) {
        const long double power = std::norm(h) + static_cast<long double>(noise);
        const auto floor = static_cast<long double>(0.01f);
        h = std::conj(h) / (power < floor ? power + floor : power);
    }
    return otf;
}

/// Forward transform of a plane.
inline WideLine Spectrum(const Plane& plane, int width, int height) {
    return Transform(WideLine(plane.begin(), plane.end()), width, height, -1);
}

/// Real parts of the plane filtered by a spectrum.
inline std::vector<long double> Filter(const Plane& plane, int width, int height, const WideLine& otf) {
    WideLine spectrum = Spectrum(plane, width, height);
    for (std::size_t k = 0; k < spectrum.size(); ++k) {
        spectrum[k] = dft_slow::Product(spectrum[k], otf[k]);
    }
    std::vector<long double> filtered;
    for (const Wide& x : Transform(spectrum, width, height, 1)) {
        filtered.push_back(x.real() / static_cast<long double>(spectrum.size()));
    }
    return filtered;
}

/// The plane, filtered under a margin by the inverse of a kernel, which is normalised first.
inline Plane Restore(const Plane& plane, int width, int height, ChMatrix<float> psf, float noise) {
    constexpr int pad = 50;
    const int columns = width + 2 * pad;
    const int rows = height + 2 * pad;
    psf.Normalize();
    const std::vector<long double> filtered =
        Filter(Extend(plane, width, height, pad), columns, rows, Inverse(TransferFunction(psf, columns, rows), noise));
    Plane restored;
    for (int y = pad; y < pad + height; ++y) {
        for (int x = pad; x < pad + width; ++x) {
            const long double value = filtered[Count(columns, y) + static_cast<std::size_t>(x)];
            restored.push_back(static_cast<unsigned char>(std::lround(std::clamp(value, 0.0L, 255.0L))));
        }
    }
    return restored;
}

} // namespace spectrum_slow
