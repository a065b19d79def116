// Marks where a plane departs from its local mean.
#include <claribox/CImageFocus.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <vector>

namespace focus {
namespace {

constexpr int kReach = 5; // given: half of the side of 11 over which a mean is taken
constexpr int kBox = 2 * kReach + 1;

// Sums of `kBox` rows, column by column. A plane narrower than a box has the columns of one box nevertheless: rows then
// run on into the next, as required (EstRegionTest.TheEdgeMapIsTheDistanceFromTheMean), and behind the plane's last
// byte there is nothing to add.
class BoxColumns {
public:
    BoxColumns(const std::uint8_t* plane, int width, int height)
        : m_Plane(plane), m_Width(static_cast<std::size_t>(width)), m_Bytes(m_Width * static_cast<std::size_t>(height)),
          m_Sums(static_cast<std::size_t>(std::max(width, kBox))) {}

    void Add(int row) { Accumulate(row, 1); }
    void Remove(int row) { Accumulate(row, -1); }
    const std::vector<int>& Sums() const { return m_Sums; }

private:
    void Accumulate(int row, int sign) {
        const std::size_t start = static_cast<std::size_t>(row) * m_Width;
        const std::size_t count = std::min(m_Sums.size(), m_Bytes - start);
        for (std::size_t x = 0; x < count; ++x) {
            m_Sums[x] += sign * m_Plane[start + x];
        }
    }

    const std::uint8_t* m_Plane;
    std::size_t m_Width;
    std::size_t m_Bytes;
    std::vector<int> m_Sums;
};

// Box means of all pixels whose box lies inside the plane. Required: in a plane narrower than a box the first mean of a
// row is formed all the same, and stored 5 bytes from the start of the row. The same test pins it.
void StoreMeans(const std::uint8_t* plane, std::uint8_t* means, int width, int height) {
    BoxColumns columns(plane, width, height);
    for (int row = 0; row < kBox - 1; ++row) {
        columns.Add(row);
    }
    for (int y = kReach; y < height - kReach; ++y) {
        columns.Add(y + kReach);
        const int* const sums = columns.Sums().data();
        std::uint8_t* const first = means + static_cast<std::ptrdiff_t>(y) * width + kReach;
        int sum = std::accumulate(sums, sums + kBox, 0);
        *first = static_cast<std::uint8_t>(sum / (kBox * kBox));
        for (int x = 1; x <= width - kBox; ++x) {
            sum += sums[x + kBox - 1] - sums[x - 1];
            first[x] = static_cast<std::uint8_t>(sum / (kBox * kBox));
        }
        columns.Remove(y - kReach);
    }
}

} // namespace
} // namespace focus

void CImageFocus::GetEdgeMap(unsigned char* plane, unsigned char* map, int, int threshold) {
    if (m_Width <= 0 || m_Height <= 0) {
        return;
    }
    const std::size_t count = static_cast<std::size_t>(m_Width) * static_cast<std::size_t>(m_Height);
    std::memset(map, 0, count);
    if (m_Height >= focus::kBox) {
        focus::StoreMeans(plane, map, m_Width, m_Height);
    }
    for (std::size_t i = 0; i < count; ++i) {
        const int edge = std::abs(plane[i] - map[i]);
        map[i] = static_cast<std::uint8_t>(edge < threshold ? 0 : edge);
    }
}
