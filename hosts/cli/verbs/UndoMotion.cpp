#include "UndoMotion.h"

#include <claribox/ChFunctions.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <exception>
#include <memory>
#include <system_error>
#include <thread>
#include <vector>

namespace cli {
namespace {

/// Given: the relative noise power that `CImageFocus::DeMotionBlur` assumes. A smaller one sharpens more and amplifies
/// noise.
constexpr float kNoisePower = 0.06f;

constexpr std::size_t kMostPlanes = 3;

struct ExtendedSize {
    explicit ExtendedSize(const PackedPixels& pixels)
        : width(pixels.width + 2 * FoTransformMargin), height(pixels.height + 2 * FoTransformMargin) {}

    std::uint32_t Count() const { return static_cast<std::uint32_t>(width) * static_cast<std::uint32_t>(height); }

    int width;
    int height;
};

/// The library's inverse spectrum for this motion with a gain of 1 at frequency zero. The noise term takes a part of
/// every frequency, of the mean too: unscaled, a picture would come out darker by 1/1.06.
class FlatGainInverse {
public:
    FlatGainInverse(const ExtendedSize& size, int length, int degree) : m_Spectrum(size.Count(), 128) {
        ChMatrix<float> kernel;
        ChMakeMotionPSF(kernel, length, degree);
        kernel.Normalize();
        ChPSF2OTF(m_Spectrum, kernel, size.width, size.height);
        ChInverseOTF(m_Spectrum, size.width, size.height, kNoisePower);
        // The transfer function of a normalised kernel is 1 there but for rounding: motion leaves a flat picture as it
        // is.
        const double scale = 1.0 / static_cast<double>(m_Spectrum.m_Spectrum[0].re);
        std::for_each_n(m_Spectrum.m_Spectrum, size.Count(), [scale](ChComplex& element) {
            element.re = static_cast<float>(static_cast<double>(element.re) * scale);
            element.im = static_cast<float>(static_cast<double>(element.im) * scale);
        });
    }

    DFT_Buffer& Spectrum() { return m_Spectrum; }

private:
    DFT_Buffer m_Spectrum;
};

/// Calls work(0) to work(count - 1) on up to one thread a processor, the caller's among them, or on as many as can be
/// started.
template <typename Work>
void OnThreads(std::size_t count, const Work& work) {
    std::vector<std::exception_ptr> failures(count);
    std::atomic<std::size_t> next = 0;
    const auto takeTurns = [&] {
        for (std::size_t k = next++; k < count; k = next++) {
            try {
                work(k);
            } catch (...) {
                failures[k] = std::current_exception();
            }
        }
    };
    {
        std::vector<std::jthread> threads;
        try {
            for (std::size_t k = 1; k < std::min<std::size_t>(count, std::thread::hardware_concurrency()); ++k) {
                threads.emplace_back(takeTurns);
            }
        } catch (const std::system_error&) {
            // with fewer threads the work is done all the same
        }
        takeTurns();
    }
    for (const std::exception_ptr& failure : failures) {
        if (failure) {
            std::rethrow_exception(failure);
        }
    }
}

} // namespace

void UndoMotion(const Settings& settings, int degree, const PackedPixels& pixels) {
    std::array<std::vector<unsigned char>, kMostPlanes> planes;
    planes.fill(std::vector<unsigned char>(CountOf(pixels)));
    ForEachPixel(pixels, [&](unsigned char b, unsigned char g, unsigned char r, std::size_t k) {
        planes[0][k] = b;
        planes[1][k] = g;
        planes[2][k] = r;
    });
    const bool grey = planes[0] == planes[1] && planes[0] == planes[2];
    const ExtendedSize size(pixels);
    FlatGainInverse inverse(size, settings.length, degree);
    OnThreads(grey ? 1 : kMostPlanes, [&](std::size_t k) {
        const auto extended = std::make_unique_for_overwrite<unsigned char[]>(size.Count());
        ChEntendBuffer(planes[k].data(), pixels.width, pixels.height, extended.get(), FoTransformMargin);
        ChInverseFilter(extended.get(), size.width, size.height, inverse.Spectrum());
        ChCropBuffer(planes[k].data(), pixels.width, pixels.height, extended.get(), FoTransformMargin);
    });
    ForEachPixel(pixels, [&](unsigned char& b, unsigned char& g, unsigned char& r, std::size_t k) {
        b = planes[0][k];
        g = planes[grey ? 0 : 1][k];
        r = planes[grey ? 0 : 2][k];
    });
}

} // namespace cli
