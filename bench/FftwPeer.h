// The peer of the DFT engine, in three precisions behind one face.
#pragma once

#include <fftw3.h>

#include <vector>

namespace bench {

template <typename Real>
struct FftwNames;

#define CLARIBOX_FFTW_NAMES(Real, prefix)                                                                              \
    template <>                                                                                                        \
    struct FftwNames<Real> {                                                                                           \
        using Plan = prefix##_plan;                                                                                    \
        using Element = prefix##_complex;                                                                              \
        static constexpr auto* kMakePlan = prefix##_plan_dft;                                                          \
        static constexpr auto* kExecute = prefix##_execute;                                                            \
        static constexpr auto* kDestroy = prefix##_destroy_plan;                                                       \
    }
CLARIBOX_FFTW_NAMES(float, fftwf);
CLARIBOX_FFTW_NAMES(double, fftw);
CLARIBOX_FFTW_NAMES(long double, fftwl);
#undef CLARIBOX_FFTW_NAMES

/// A forward transform in place on a fixed array of pairs, real part first.
template <typename Real>
class FftwTransform {
public:
    /// Lengths slowest dimension first; `flags` FFTW_MEASURE, which overwrites the array, or FFTW_ESTIMATE.
    FftwTransform(const std::vector<int>& lengths, void* data, unsigned flags)
        : m_Plan(Names::kMakePlan(static_cast<int>(lengths.size()), lengths.data(),
                                  static_cast<typename Names::Element*>(data),
                                  static_cast<typename Names::Element*>(data), FFTW_FORWARD, flags)) {}
    ~FftwTransform() { Names::kDestroy(m_Plan); }
    FftwTransform(const FftwTransform&) = delete;
    FftwTransform& operator=(const FftwTransform&) = delete;

    void Run() const { Names::kExecute(m_Plan); }

private:
    using Names = FftwNames<Real>;
    typename Names::Plan m_Plan;
};

/// The forward transform of a real plane in single precision, out of place, to half spectra.
class FftwRealTransform {
public:
    FftwRealTransform(const std::vector<int>& lengths, float* plane, void* spectrum, unsigned flags)
        : m_Plan(fftwf_plan_dft_r2c(static_cast<int>(lengths.size()), lengths.data(), plane,
                                    static_cast<fftwf_complex*>(spectrum), flags)) {}
    ~FftwRealTransform() { fftwf_destroy_plan(m_Plan); }
    FftwRealTransform(const FftwRealTransform&) = delete;
    FftwRealTransform& operator=(const FftwRealTransform&) = delete;

    void Run() const { fftwf_execute(m_Plan); }

private:
    fftwf_plan m_Plan;
};

} // namespace bench
