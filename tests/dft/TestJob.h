// A transform of the DFT engine from creation to release, for tests.
#pragma once

#include "dft/dft.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

/// A complex job in one precision. A failure of any step is a failure of the test.
template <typename Real>
class TestJob {
public:
    using Elements = std::vector<dft::Complex<Real>>;
    static constexpr std::int32_t kPrecision = sizeof(Real) == sizeof(float) ? dft::DFT_SINGLE : dft::DFT_DOUBLE;

    /// Lengths slowest dimension first. Committed; whoever changes a field afterwards commits again.
    explicit TestJob(const std::vector<int>& lengths, std::int32_t placement = dft::DFT_INPLACE) {
        const int rank = static_cast<int>(lengths.size());
        const std::int32_t status =
            rank == 1 ? dft::dfti_create_descriptor(&m_Handle, kPrecision, dft::DFT_COMPLEX, rank, lengths[0])
                      : dft::dfti_create_descriptor(&m_Handle, kPrecision, dft::DFT_COMPLEX, rank, lengths.data());
        EXPECT_EQ(status, dft::DFT_OK);
        m_Handle->placement = placement;
        Commit();
    }
    ~TestJob() { EXPECT_EQ(dft::dfti_free_descriptor(&m_Handle), dft::DFT_OK); }
    TestJob(const TestJob&) = delete;
    TestJob& operator=(const TestJob&) = delete;

    dft::DftDescriptor* operator->() { return m_Handle; }

    void Commit() { EXPECT_EQ(dft::dfti_commit_descriptor(m_Handle), dft::DFT_OK); }

    /// In place on `data`.
    void RunInPlace(int sign, dft::Complex<Real>* data) const { Compute(sign, data, nullptr); }

    /// As the placement says; out of place the input must come back unchanged. `sign` of the exponent.
    Elements Run(int sign, const Elements& input) const {
        Elements data = input;
        if (m_Handle->placement == dft::DFT_INPLACE) {
            Compute(sign, data.data(), nullptr);
            return data;
        }
        Elements output(input.size());
        Compute(sign, data.data(), output.data());
        EXPECT_TRUE(SameBytes(data, input)) << "the input was changed";
        return output;
    }

    static bool SameBytes(const Elements& a, const Elements& b) {
        return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(a[0])) == 0;
    }

private:
    void Compute(int sign, void* data, void* output) const {
        const auto compute = sign < 0 ? dft::dfti_compute_forward : dft::dfti_compute_backward;
        EXPECT_EQ(compute(m_Handle, data, output), dft::DFT_OK);
    }

    dft::DftDescriptor* m_Handle = nullptr;
};
