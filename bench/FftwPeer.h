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

} // namespace bench
