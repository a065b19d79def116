// Lines on their way into batches and back, in every vector class, against plain loops.
#include "dft/driver/line_transport.h"

#include "common/GuardedBuffer.h"
#include "common/VectorClassTest.h"
#include "dft/plans/plan_runs.h"
#include "dft/pow2/pow2_runs.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <ostream>
#include <utility>

namespace {

struct Shape {
    const char* name;
    std::ptrdiff_t elementStride; ///< 0: as the length asks
    std::ptrdiff_t lineStride;
    friend std::ostream& operator<<(std::ostream& out, const Shape& shape) { return out << shape.name; }
};
constexpr Shape kShapes[] = {{"columns", 37, 1},        {"upward columns", -37, 1},   {"rows", 1, 71},
                             {"upward rows", 1, -71},   {"strided rows", 2, 150},     {"strided columns", 80, 2},
                             {"backward rows", -1, 71}, {"one after the other", 1, 0}};
// Around the sides of the squares that are turned, which are 1 to 8 elements long, and the rows fetched ahead.
constexpr std::ptrdiff_t kLengths[] = {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 33, 71};

class LineTransportTest : public VectorClassTest {};

template <typename Real>
class Transport {
public:
    Transport(const dft::LineTransport<Real>& transport, const Shape& shape, std::ptrdiff_t count,
              std::ptrdiff_t length)
        : m_Transport(transport), m_ElementStride(shape.elementStride),
          m_LineStride(shape.lineStride == 0 ? length : shape.lineStride), m_Count(count), m_Length(length),
          m_Array(Extent(), Misalignment()), m_Batch(static_cast<std::size_t>(2 * transport.lanes * length)) {
        for (std::size_t k = 0; k < m_Array.size(); ++k) {
            const auto number = static_cast<Real>(k + 1);
            m_Array.Write(k, {number, -number});
        }
    }

    void CheckGather() {
        FillRandom(m_Batch, 3); // lanes without a line are cleared
        m_Transport.gather(Part(0, m_Count), m_Batch.data());
        EXPECT_TRUE(m_Batch.GuardsIntact());
        for (std::ptrdiff_t k = 0; k < m_Length; ++k) {
            for (std::ptrdiff_t j = 0; j < m_Transport.lanes; ++j) {
                const dft::Complex<Real> x = j < m_Count ? m_Array.Read(At(k, j)) : dft::Complex<Real>{0, 0};
                ASSERT_EQ(m_Batch.data()[Re(k, j)], x.re) << "element " << k << ", line " << j;
                ASSERT_EQ(m_Batch.data()[Im(k, j)], x.im) << "element " << k << ", line " << j;
            }
        }
    }

    void CheckScatter(Real scale) {
        GuardedBuffer<dft::Complex<Real>> expected(m_Array.size(), Misalignment());
        for (std::size_t k = 0; k < expected.size(); ++k) {
            expected.Write(k, m_Array.Read(k));
        }
        FillRandom(m_Batch, 5);
        for (std::ptrdiff_t k = 0; k < m_Length; ++k) {
            for (std::ptrdiff_t j = 0; j < m_Transport.lanes; ++j) {
                m_Batch.data()[Re(k, j)] = static_cast<Real>(100 * k + j);
                m_Batch.data()[Im(k, j)] = static_cast<Real>(-7 * k - j);
                if (j < m_Count) {
                    expected.Write(At(k, j), {m_Batch.data()[Re(k, j)] * scale, m_Batch.data()[Im(k, j)] * scale});
                }
            }
        }
        m_Transport.scatter(m_Batch.data(), Part(0, m_Count), scale);
        EXPECT_TRUE(SameBytes(expected, m_Array));
        EXPECT_TRUE(m_Array.GuardsIntact());
    }

    /// `first` lines go out and the others come in as if one after the other.
    void CheckExchange(std::ptrdiff_t first, Real scale) {
        Transport expected(m_Transport, {"", m_ElementStride, m_LineStride}, m_Count, m_Length);
        for (Transport* const each : {this, &expected}) {
            for (std::size_t k = 0; k < m_Batch.size(); ++k) {
                each->m_Batch.data()[k] = static_cast<Real>(k);
            }
        }
        m_Transport.scatter(expected.m_Batch.data(), expected.Part(0, first), scale);
        m_Transport.gather(expected.Part(first, m_Count), expected.m_Batch.data());
        m_Transport.exchange(m_Batch.data(), Part(0, first), Part(first, m_Count), scale);
        EXPECT_TRUE(SameBytes(expected.m_Array, m_Array));
        EXPECT_TRUE(SameBytes(expected.m_Batch, m_Batch));
        EXPECT_TRUE(m_Array.GuardsIntact());
        EXPECT_TRUE(m_Batch.GuardsIntact());
    }

private:
    std::ptrdiff_t Span(std::ptrdiff_t stride, std::ptrdiff_t count) const { return (count - 1) * std::abs(stride); }
    /// No larger than the lines reach, so that the guards stand at their ends.
    std::size_t Extent() const {
        return static_cast<std::size_t>(Span(m_ElementStride, m_Length) + Span(m_LineStride, m_Count) + 1);
    }
    /// Within an element, or within a cache line: squares of rows begin differently.
    std::size_t Misalignment() const { return m_Count % 2 == 0 ? sizeof(Real) : 3 * sizeof(dft::Complex<Real>); }
    std::ptrdiff_t Start() const {
        return (m_ElementStride < 0 ? Span(m_ElementStride, m_Length) : 0) +
               (m_LineStride < 0 ? Span(m_LineStride, m_Count) : 0);
    }
    std::size_t At(std::ptrdiff_t k, std::ptrdiff_t j) const {
        return static_cast<std::size_t>(Start() + k * m_ElementStride + j * m_LineStride);
    }
    std::size_t Re(std::ptrdiff_t k, std::ptrdiff_t j) const {
        return static_cast<std::size_t>(2 * k * m_Transport.lanes + j);
    }
    std::size_t Im(std::ptrdiff_t k, std::ptrdiff_t j) const {
        return static_cast<std::size_t>((2 * k + 1) * m_Transport.lanes + j);
    }
    dft::Lines<Real> Part(std::ptrdiff_t first, std::ptrdiff_t end) {
        return {m_Array.data() + Start() + first * m_LineStride, m_ElementStride, m_LineStride, end - first, m_Length};
    }

    const dft::LineTransport<Real>& m_Transport;
    std::ptrdiff_t m_ElementStride;
    std::ptrdiff_t m_LineStride;
    std::ptrdiff_t m_Count;
    std::ptrdiff_t m_Length;
    GuardedBuffer<dft::Complex<Real>> m_Array;
    GuardedBuffer<Real> m_Batch;
};

template <typename Real>
void CheckAll(const dft::LineTransport<Real>& transport, int lanesOfPlans, int lanesOfPow2) {
    EXPECT_EQ(transport.lanes, lanesOfPlans);
    EXPECT_EQ(transport.lanes, lanesOfPow2);
    for (const Shape& shape : kShapes) {
        for (const std::ptrdiff_t length : kLengths) {
            for (std::ptrdiff_t count = 1; count <= transport.lanes; ++count) {
                SCOPED_TRACE(::testing::Message()
                             << shape << ", " << count << " lines of " << length << ", " << sizeof(Real) << " bytes");
                Transport<Real> lines(transport, shape, count, length);
                lines.CheckGather();
                lines.CheckScatter(1);
                lines.CheckScatter(static_cast<Real>(0.375));
            }
            const std::ptrdiff_t lanes = transport.lanes;
            for (const auto& [first, count] : {std::pair{lanes, 2 * lanes}, {lanes, lanes + 1}}) {
                SCOPED_TRACE(::testing::Message() << shape << ", lines of " << length << ", " << first << " out, "
                                                  << count - first << " in, " << sizeof(Real) << " bytes");
                Transport<Real>(transport, shape, count, length).CheckExchange(first, 1);
                Transport<Real>(transport, shape, count, length).CheckExchange(first, static_cast<Real>(0.375));
            }
        }
    }
}

TEST_P(LineTransportTest, CopiesTheLinesAndNothingElse) {
    CheckAll(dft::ActiveLineTransportSingle(), dft::ActivePlanRunsSingle().lanes, dft::ActivePow2RunsSingle().lanes);
    CheckAll(dft::ActiveLineTransportDouble(), dft::ActivePlanRunsDouble().lanes, dft::ActivePow2RunsDouble().lanes);
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(LineTransportTest);

} // namespace
