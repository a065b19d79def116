#include "SkewedMeans.h"

#include "simd/Vector.h"

namespace denoise::CLARIBOX_VECTOR_CLASS {
namespace {

using namespace simd::CLARIBOX_VECTOR_CLASS;

constexpr int kSkew = 3;
constexpr int kContext = 5; // steps before the first and behind the last that neighbours reach

/// Bytes as 16-bit numbers. Samples outside the plane are too far from all others to count.
struct ByteCells {
    using Sample = std::uint8_t;
    using Element = std::int16_t;
    using Vector = I16;
    using Mask = I16;
    static constexpr Element kOutside = 1024; // nine of them still fit 16 bits

    static Vector Mean(Vector centre, const Vector (&samples)[9], int tolerance) {
        // Samples differ by 255 at most.
        const auto limit = static_cast<Element>(tolerance < 255 ? tolerance : 255);
        Vector sum = {};
        Vector count = {};
        for (const Vector& sample : samples) {
            const Vector difference = sample - centre;
            const Mask like = (difference <= limit) & (difference >= static_cast<Element>(-limit));
            sum += sample & like;
            count -= like;
        }
        // 2 * sum * ceil(32768 / count) / 65536 is above sum / count by less than 2 * 9 * 255 / 65536, and that by less
        // than 1/9 from the next whole number: dropping 16 bits divides exactly.
        U16 reciprocals = U16{} + std::uint16_t{32768};
        for (int n = 2; n <= 9; ++n) {
            const auto reciprocal = static_cast<std::uint16_t>((32768 + n - 1) / n);
            const U16 isCount = reinterpret_cast<U16>(count == static_cast<Element>(n));
            reciprocals = ((U16{} + reciprocal) & isCount) | (reciprocals & ~isCount);
        }
        const U16 quotient = MultiplyHigh(reinterpret_cast<U16>(sum + sum), reciprocals);
        return reinterpret_cast<Vector>(quotient);
    }
};

/// Floats as doubles, in which their sums are kept.
struct FloatCells {
    using Sample = float;
    using Element = double;
    using Vector = F64;
    using Mask = I64;
    static constexpr Element kOutside = __builtin_inf();

    static Vector Mean(Vector centre, const Vector (&samples)[9], int tolerance) {
        const auto limit = static_cast<Element>(static_cast<float>(tolerance));
        Vector sum = {};
        Vector count = {};
        for (const Vector& sample : samples) {
            const Vector difference = sample - centre;
            const Mask like = ~((difference > limit) | (difference < -limit)); // an unordered difference counts
            sum += reinterpret_cast<Vector>(reinterpret_cast<Mask>(sample) & like);
            count += reinterpret_cast<Vector>(reinterpret_cast<Mask>(Vector{} + 1.0) & like);
        }
        const Mask keep = centre == 0.0;
        const Vector mean = RoundToFloat(sum / count);
        return reinterpret_cast<Vector>((reinterpret_cast<Mask>(centre) & keep) |
                                        (reinterpret_cast<Mask>(mean) & ~keep));
    }
};

template <typename Cells>
class Band {
public:
    using Sample = typename Cells::Sample;
    using Element = typename Cells::Element;
    using Vector = typename Cells::Vector;
    using Mask = typename Cells::Mask;
    static constexpr int kRows = kLanes<Element>;

    Band(const MeanArea<Sample>& area, int firstRow, Element* scratch)
        : m_Area(area), m_Top(area.top + firstRow), m_Rows(area.rows - firstRow < kRows ? area.rows - firstRow : kRows),
          m_Cells(scratch) {}

    void Smooth(int tolerance) {
        Fill();
        const int steps = m_Area.columns + kSkew * (m_Rows - 1);
        Vector delays;
        for (int lane = 0; lane < kRows; ++lane) {
            delays[lane] = static_cast<Element>(lane < m_Rows ? kSkew * lane : kNever);
        }
        for (int step = 0; step < steps; ++step) {
            Element* const at = CellAt(step + kSkew, 1);
            const auto cells = [&](int steps_, int lanes) { return Load<Vector>(at + steps_ * kStride + lanes); };
            const Vector centre = cells(0, 0);
            const Vector samples[9] = {
                cells(-kSkew - 1, -1), cells(-kSkew, -1),   cells(-kSkew + 1, -1), cells(-1, 0),       centre,
                cells(1, 0),           cells(kSkew - 1, 1), cells(kSkew, 1),       cells(kSkew + 1, 1)};
            // A lane is at work from its own start to the end of its row.
            const auto begun = static_cast<Element>(step < kFar ? step : kFar);
            const auto ended = static_cast<Element>(step - m_Area.columns > -kFar ? step - m_Area.columns : -kFar);
            const Mask active = (delays <= begun) & (delays > ended);
            const Mask mean = reinterpret_cast<Mask>(Cells::Mean(centre, samples, tolerance));
            Store(at, (mean & active) | (reinterpret_cast<Mask>(centre) & ~active));
        }
        ForEachSample(1, m_Rows, 0, m_Area.columns,
                      [](Sample& sample, const Element& cell) { sample = static_cast<Sample>(cell); });
    }

private:
    static constexpr int kStride = kRows + 2; // a lane for the row above, one for each row, one for the row below
    static constexpr int kFar = 16000;        // beyond every delay, within 16 bits
    static constexpr int kNever = 32000;

    // The cell of lane 0, the row above, at column x is that of step x.
    Element* CellAt(int step, int lane) const { return m_Cells + (step + kContext) * kStride + lane; }

    void Fill() {
        const int last = m_Area.columns + kSkew * (kRows + 1) + kContext;
        for (Element* cell = CellAt(-kContext, 0); cell < CellAt(last, 0); ++cell) {
            *cell = Cells::kOutside;
        }
        // One column and one row of context on every side, where the plane has them.
        const int firstLane = m_Top > 0 ? 0 : 1;
        const int lastLane = m_Top + m_Rows < m_Area.height ? m_Rows + 1 : m_Rows;
        const int firstColumn = m_Area.left > 0 ? -1 : 0;
        const int lastColumn = m_Area.left + m_Area.columns < m_Area.width ? m_Area.columns + 1 : m_Area.columns;
        ForEachSample(firstLane, lastLane, firstColumn, lastColumn,
                      [](const Sample& sample, Element& cell) { cell = static_cast<Element>(sample); });
    }

    // Pairs samples with their cells, in blocks of columns whose cells stay in the first-level cache.
    template <typename Work>
    void ForEachSample(int firstLane, int lastLane, int firstColumn, int lastColumn, Work work) {
        constexpr int kBlock = 64;
        for (int block = firstColumn; block < lastColumn; block += kBlock) {
            const int end = block + kBlock < lastColumn ? block + kBlock : lastColumn;
            for (int lane = firstLane; lane <= lastLane; ++lane) {
                Sample* const row =
                    m_Area.plane + static_cast<std::ptrdiff_t>(m_Top + lane - 1) * m_Area.width + m_Area.left;
                Element* const cells = CellAt(kSkew * lane, lane);
                for (int x = block; x < end; ++x) {
                    work(row[x], cells[x * kStride]);
                }
            }
        }
    }

    const MeanArea<Sample>& m_Area;
    int m_Top;
    int m_Rows;
    Element* m_Cells;
};

template <typename Cells>
void Smooth(const MeanArea<typename Cells::Sample>& area, int tolerance, typename Cells::Element* scratch) {
    for (int row = 0; row < area.rows; row += Band<Cells>::kRows) {
        Band<Cells>(area, row, scratch).Smooth(tolerance);
    }
}

} // namespace

const SkewedMeans kSkewedMeans = {Band<ByteCells>::kRows, Band<FloatCells>::kRows, Smooth<ByteCells>,
                                  Smooth<FloatCells>};

} // namespace denoise::CLARIBOX_VECTOR_CLASS
