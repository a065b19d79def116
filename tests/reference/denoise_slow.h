// The denoiser in its plainest form: one sample at a time, step by step, with wide sums in double and
// the plain wavelet engine. Slow and obviously correct; the library's own code includes nothing of it.
#pragma once

#include "reference/wavelet_slow.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <vector>

namespace reference {

struct DenoiseSlow {
    using Bytes = std::vector<std::uint8_t>;
    using Floats = std::vector<float>;

    int width;
    int height;
    int type = 0;
    float threshold = 5.0f;
    bool measure = true;
    int left = 0;
    int top = 0;

    bool Inside(int y, int x) const { return y >= 0 && y < height && x >= 0 && x < width; }

    template <typename Plane>
    auto& At(Plane& plane, int y, int x) const {
        return plane[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
    }

    void Denoise(Bytes& y, Bytes& u, Bytes& v) {
        if (measure) {
            Probe(y);
            threshold = Noise(y);
        }
        Floats coefficients = Forward(y);
        SmoothCoefficients(coefficients, 1, 50, width / 2, height / 2, width / 2, height / 2);
        ShrinkWhere(coefficients, threshold, &DenoiseSlow::IsHigh);
        ShrinkWhere(coefficients, static_cast<float>(threshold * 1.2f), &DenoiseSlow::IsMiddle);
        y = Inverse(coefficients);
        SmoothPlane(u, 1, 50);
        SmoothPlane(v, 1, 50);
    }

    void ShowBand(Bytes& plane, int band) const {
        Floats coefficients = Forward(plane);
        KeepBand(coefficients, band);
        plane = Inverse(coefficients);
    }

    // Regions of the coefficients.
    bool IsAny(int, int) const { return true; }
    bool IsHigh(int r, int c) const { return r >= height / 2 || c >= width / 2; }
    bool IsMiddle(int r, int c) const { return (r > height / 8 && r < height / 2) || (c > width / 8 && c < width / 2); }
    bool IsLow(int r, int c) const { return r < height / 8 && c < width / 8; }
    using Region = bool (DenoiseSlow::*)(int, int) const;

    void ShrinkWhere(Floats& coefficients, float t, Region region) const {
        for (int r = 0; r < height; ++r) {
            for (int c = 0; c < width; ++c) {
                if ((this->*region)(r, c)) {
                    At(coefficients, r, c) = Shrunk(At(coefficients, r, c), t);
                }
            }
        }
    }

    float Shrunk(float coefficient, float limit) const {
        const double x = coefficient;
        const double a = std::fabs(x);
        const double t = limit;
        if (type < 0 || type > 2) {
            return coefficient;
        }
        if (a < t) {
            return 0.0f;
        }
        const double sign = x > 0 ? 1 : x < 0 ? -1 : 0;
        return static_cast<float>(type == 0 ? sign * (a - t) : type == 1 ? x : x * (1.0 - t * t / (a * a)));
    }

    void KeepBand(Floats& coefficients, int band) const {
        for (int r = 0; r < height; ++r) {
            for (int c = 0; c < width; ++c) {
                if ((band == 0 && !IsHigh(r, c)) || (band == 1 && !IsMiddle(r, c)) ||
                    (band == 2 && (r > height / 8 || c > width / 8))) {
                    At(coefficients, r, c) = 0.0f;
                }
            }
        }
    }

    void SmoothCoefficients(Floats& plane, int radius, int tolerance, int x0, int y0, int columns, int rows) const {
        for (int y = y0; y < y0 + rows; ++y) {
            for (int x = x0; x < x0 + columns; ++x) {
                if (At(plane, y, x) != 0.0f) {
                    SmoothSample<double>(plane, radius, tolerance, y, x);
                }
            }
        }
    }

    void SmoothPlane(Bytes& plane, int radius, int tolerance) const {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                SmoothSample<int>(plane, radius, tolerance, y, x);
            }
        }
    }

    /// The mean of the neighbours that do not differ from the sample by more than the tolerance. NaNs do not differ.
    template <typename Sum, typename Sample>
    void SmoothSample(std::vector<Sample>& plane, int radius, int tolerance, int y, int x) const {
        Sum sum = 0;
        int count = 0;
        for (int ny = y - radius; ny <= y + radius; ++ny) {
            for (int nx = x - radius; nx <= x + radius; ++nx) {
                if (!Inside(ny, nx)) {
                    continue;
                }
                const Sum neighbour = At(plane, ny, nx);
                if (!(std::abs(neighbour - static_cast<Sum>(At(plane, y, x))) > static_cast<Sum>(tolerance))) {
                    sum += neighbour;
                    ++count;
                }
            }
        }
        if (count > 0) {
            At(plane, y, x) = static_cast<Sample>(sum / count);
        }
    }

    void Probe(const Bytes& plane) {
        double best = std::numeric_limits<double>::max();
        for (int by = 0; by < height / 8 - 12; ++by) {
            for (int bx = 0; bx < width / 8 - 12; ++bx) {
                double variances = 0;
                double means = 0;
                double squares = 0;
                for (int block = 0; block < 144; ++block) {
                    const double mean = BlockMean(plane, bx + block % 12, by + block / 12, false);
                    variances += BlockMean(plane, bx + block % 12, by + block / 12, true) - mean * mean;
                    means += mean;
                    squares += mean * mean;
                }
                const double mean = means / 144;
                const double score = variances + (squares / 144 - mean * mean);
                if (score < best && mean > 50 && mean <= 200) {
                    best = score;
                    left = 8 * bx;
                    top = 8 * by;
                }
            }
        }
    }

    float Noise(const Bytes& plane) const {
        Floats square;
        for (int r = 0; r < 96; ++r) {
            for (int c = 0; c < 96; ++c) {
                square.push_back(At(plane, top + r, left + c));
            }
        }
        const Floats coefficients = WaveletSlow(FilterSetDenoise).Forward2D(square, 96, 96, 3, true);
        float sum = 0.0f;
        for (std::size_t k = 0; k < coefficients.size(); ++k) {
            if (k / 96 >= 24 || k % 96 >= 24) {
                sum = static_cast<float>(static_cast<double>(sum) + std::fabs(static_cast<double>(coefficients[k])));
            }
        }
        return static_cast<float>(static_cast<double>(sum) / 8640.0 / static_cast<double>(0.6745f));
    }

    Floats Forward(const Bytes& plane) const {
        return WaveletSlow(FilterSetDenoise).Forward2D(Floats(plane.begin(), plane.end()), width, height, 3, true);
    }

    Bytes Inverse(const Floats& coefficients) const {
        Bytes plane;
        for (const float x : WaveletSlow(FilterSetDenoise).Inverse2D(coefficients, width, height, 3, true)) {
            plane.push_back(Restored(x));
        }
        return plane;
    }

    static std::uint8_t Restored(float x) {
        const double limited = !(x > 0.0f) ? 0.0 : x > 255.0f ? 254.5 : static_cast<double>(x);
        return static_cast<std::uint8_t>(limited + 0.5);
    }

    double BlockMean(const Bytes& plane, int bx, int by, bool ofSquares) const {
        int sum = 0;
        for (int k = 0; k < 64; ++k) {
            const int sample = At(plane, 8 * by + k / 8, 8 * bx + k % 8);
            sum += ofSquares ? sample * sample : sample;
        }
        return sum * 0.015625;
    }
};

} // namespace reference
