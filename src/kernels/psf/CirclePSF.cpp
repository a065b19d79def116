#include "claribox/ChFunctions.h"

#include "kernels/psf/Pif.h"

#include <cmath>
#include <cstdlib>

namespace {

/// A disk about the origin and the area measures of its first quadrant.
class Disk {
public:
    explicit Disk(double radius) : m_Radius(radius), m_RadiusSquared(radius * radius) {}

    double Area() const { return kPi * m_RadiusSquared; }

    /// Where the horizontal line at height `y` leaves the disk, kept within x0..x1.
    double Crossing(double x0, double x1, double y) const {
        if (x0 * x0 + y * y > m_RadiusSquared) {
            return x0;
        }
        if (x1 * x1 + y * y > m_RadiusSquared) {
            return std::sqrt(m_RadiusSquared - y * y);
        }
        return x1;
    }

    /// Antiderivative of the height sqrt(R^2 - x^2) of the upper half circle, constant beyond its ends.
    double HeightIntegral(double x) const {
        const double quarter = 0.25 * kPi * m_RadiusSquared;
        const double q = x / m_Radius;
        const double heightSquared = m_RadiusSquared - x * x;
        if (heightSquared < 0.0) {
            return q < 0.0 ? -quarter : quarter;
        }
        if (q < -1.0) {
            return -quarter;
        }
        if (q > 1.0) {
            return quarter;
        }
        return 0.5 * m_RadiusSquared * std::asin(q) + 0.5 * x * std::sqrt(heightSquared);
    }

private:
    static constexpr double kPi = static_cast<double>(kernels::PIF);

    double m_Radius;
    double m_RadiusSquared;
};

/// The share of `disk` that falls on the element `dx` columns and `dy` rows from its centre; both must be 0 or more.
/// An element on an axis is folded: the half beyond the axis is measured and counted twice, on both axes four times.
float ElementShare(const Disk& disk, int dx, int dy) {
    double x0 = dx - 0.5;
    const double x1 = dx + 0.5;
    double y0 = dy - 0.5;
    const double y1 = dy + 0.5;
    double fold = 1.0;
    if (x0 < 0.0) {
        x0 = 0.0;
        fold = 2.0;
    }
    if (y0 < 0.0) {
        y0 = 0.0;
        fold = 2.0 * fold;
    }
    const double upper = disk.Crossing(x0, x1, y1);
    const double lower = disk.Crossing(x0, x1, y0);
    // Where nothing lies under the arc this is exactly 0. On the x87 unit, whose registers are wider than a double, two
    // integrals of the same argument need not cancel.
    const double toLower = disk.HeightIntegral(lower);
    const double underArc = toLower - (lower == upper ? toLower : disk.HeightIntegral(upper));
    // The strip of full height left of `upper`, then what lies under the arc and above the lower edge.
    const double area = (y1 - y0) * (upper - x0) + underArc - y0 * (lower - upper);
    return static_cast<float>(area * fold / disk.Area());
}

} // namespace

void ChMakeCirclePSF(ChMatrix<float>& psf, int size, double radius) {
    psf.Create(size, size);
    const Disk disk(radius);
    const int centre = size / 2;
    for (int i = 0; i < size; ++i) {
        for (int j = 0; j < size; ++j) {
            const int dy = std::abs(i - centre);
            const int dx = std::abs(j - centre);
            if (radius == 0.0) {
                psf.At(i, j) = dx == 0 && dy == 0 ? 1.0f : 0.0f;
            } else {
                psf.At(i, j) = ElementShare(disk, dx, dy);
            }
        }
    }
}
