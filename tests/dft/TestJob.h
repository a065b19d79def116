// Jobs of the DFT engine from creation to release, for tests.
#pragma once

#include "dft/dft.h"

#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>
#include <vector>

using Lengths = std::vector<int>; ///< slowest dimension first

constexpr int kSigns[] = {-1, 1}; ///< of the exponent: forward, backward
constexpr std::int32_t kPlacements[] = {dft::DFT_INPLACE, dft::DFT_NOT_INPLACE};
constexpr std::int32_t kOrderings[] = {dft::DFT_ORDERED, 0};
template <typename Real>
inline constexpr std::int32_t kPrecisionOf = std::is_same_v<Real, float> ? dft::DFT_SINGLE : dft::DFT_DOUBLE;

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
    std::int32_t Compute(int sign, void* input, void* output) const {
        return (sign < 0 ? dft::dfti_compute_forward : dft::dfti_compute_backward)(handle, input, output);
    }
};

/// The routine of a record in one precision and direction.
template <typename Real>
dft::DftRoutine& SlotOf(dft::DftDescriptor& record, int sign) {
    if constexpr (std::is_same_v<Real, float>) {
        return sign < 0 ? record.forward_single : record.backward_single;
    } else {
        return sign < 0 ? record.forward_double : record.backward_double;
    }
}

/// Sets the scale factors of one precision; those of the other would show.
template <typename Real>
void SetScales(dft::DftDescriptor& record, double forward, double backward) {
    constexpr bool isSingle = std::is_same_v<Real, float>;
    record.forward_scale_single = isSingle ? static_cast<float>(forward) : 9.0f;
    record.backward_scale_single = isSingle ? static_cast<float>(backward) : 9.0f;
    record.forward_scale_double = isSingle ? 9.0 : forward;
    record.backward_scale_double = isSingle ? 9.0 : backward;
}

template <typename Element>
bool AreSame(const std::vector<Element>& a, const std::vector<Element>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(Element)) == 0;
}

/// A complex job in one precision, committed; whoever changes a field afterwards commits again. A failure of any step
/// is a failure of the test.
template <typename Real>
struct TestJob : Job {
    using Elements = std::vector<dft::Complex<Real>>;

    explicit TestJob(const Lengths& lengths, std::int32_t placement = dft::DFT_INPLACE)
        : Job(kPrecisionOf<Real>, dft::DFT_COMPLEX, lengths, placement) {
        Commit();
    }

    /// As the placement says; out of place the input must come back unchanged.
    Elements Run(int sign, const Elements& input) const {
        Elements data = input;
        Elements output(handle->placement == dft::DFT_INPLACE ? 0 : input.size());
        EXPECT_EQ(Compute(sign, data.data(), output.data()), dft::DFT_OK);
        EXPECT_TRUE(output.empty() || AreSame(data, input)) << "the input was changed";
        return output.empty() ? data : output;
    }
};
