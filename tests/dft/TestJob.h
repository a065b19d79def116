// Jobs of the DFT engine from creation to release, for tests.
#pragma once

#include "dft/dft.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

using Lengths = std::vector<int>; ///< slowest dimension first

inline std::int32_t Create(dft::DftDescriptor** handle, int precision, int domain, const Lengths& lengths) {
    const int rank = static_cast<int>(lengths.size());
    return rank == 1 ? dft::dfti_create_descriptor(handle, precision, domain, rank, lengths[0])
                     : dft::dfti_create_descriptor(handle, precision, domain, rank, lengths.data());
}

/// A descriptor that is freed at the end. Not committed.
struct Job {
    dft::DftDescriptor* handle = nullptr;

    Job(int precision, int domain, const Lengths& lengths, int placement = dft::DFT_INPLACE) {
        EXPECT_EQ(Create(&handle, precision, domain, lengths), dft::DFT_OK);
        handle->placement = placement;
    }
    ~Job() { EXPECT_EQ(dft::dfti_free_descriptor(&handle), dft::DFT_OK); }
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;
    dft::DftDescriptor* operator->() const { return handle; }

    void Commit() const { EXPECT_EQ(dft::dfti_commit_descriptor(handle), dft::DFT_OK); }
};

template <typename Real>
inline constexpr std::int32_t kPrecisionOf = sizeof(Real) == sizeof(float) ? dft::DFT_SINGLE : dft::DFT_DOUBLE;

/// Sets the scale factors of one precision; those of the other would show.
template <typename Real>
void SetScales(dft::DftDescriptor& record, double forward, double backward) {
    constexpr bool isSingle = sizeof(Real) == sizeof(float);
    record.forward_scale_single = isSingle ? static_cast<float>(forward) : 9.0f;
    record.backward_scale_single = isSingle ? static_cast<float>(backward) : 9.0f;
    record.forward_scale_double = isSingle ? 9.0 : forward;
    record.backward_scale_double = isSingle ? 9.0 : backward;
}

/// A complex job in one precision, committed; whoever changes a field afterwards commits again. A failure of any step
/// is a failure of the test.
template <typename Real>
class TestJob : public Job {
public:
    using Elements = std::vector<dft::Complex<Real>>;

    explicit TestJob(const Lengths& lengths, std::int32_t placement = dft::DFT_INPLACE)
        : Job(kPrecisionOf<Real>, dft::DFT_COMPLEX, lengths, placement) {
        Commit();
    }

    /// As the placement says; out of place the input must come back unchanged. `sign` of the exponent.
    Elements Run(int sign, const Elements& input) const {
        const auto compute = sign < 0 ? dft::dfti_compute_forward : dft::dfti_compute_backward;
        Elements data = input;
        Elements output(handle->placement == dft::DFT_INPLACE ? 0 : input.size());
        EXPECT_EQ(compute(handle, data.data(), output.data()), dft::DFT_OK);
        if (output.empty()) {
            return data;
        }
        EXPECT_TRUE(SameBytes(data, input)) << "the input was changed";
        return output;
    }

    static bool SameBytes(const Elements& a, const Elements& b) {
        return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(a[0])) == 0;
    }
};
