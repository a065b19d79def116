// Blur, MotionBlur and DeBlur on packed pixels against split, plain filter and merge: every layout a host may have.
#include "common/GuardedBuffer.h"
#include "common/VectorClassTest.h"
#include "focus/TestKernels.h"
#include "reference/convolve_slow.h"

#include <claribox/CImageFocus.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

namespace {

enum class Operation { Blur, MotionBlur, DeBlur };

struct Job {
    Operation operation;
    int amount; // radius, or length of motion
    int degree = 0;

    void Run(CImageFocus& focus, unsigned char* pixels, FoPixelFmt format, int pitch) const {
        focus.SetRadius(amount);
        focus.SetMotionLength(amount);
        focus.SetMotionDegree(degree);
        switch (operation) {
        case Operation::Blur:
            return focus.Blur(pixels, format, pitch);
        case Operation::MotionBlur:
            return focus.MotionBlur(pixels, format, pitch);
        case Operation::DeBlur:
            return focus.DeBlur(pixels, format, pitch);
        }
    }

    ChMatrix<float> Kernel() const {
        return operation == Operation::Blur         ? BlurKernel(amount)
               : operation == Operation::MotionBlur ? MotionKernel(amount, degree)
                                                    : DeBlurKernel(amount);
    }
};

std::ostream& operator<<(std::ostream& stream, const Job& job) {
    static const char* const names[] = {"Blur", "MotionBlur", "DeBlur"};
    return stream << names[static_cast<int>(job.operation)] << " " << job.amount << " degree " << job.degree;
}

// A picture of noise in a host's memory: `padding` bytes after each row, and the rows bottom up where asked for.
struct Picture {
    int width;
    int height;
    FoPixelFmt format;
    int padding = 0;
    bool bottomUp = false;

    int PixelBytes() const { return format == FoPixelFmt_BGR24 ? 3 : 4; }
    int RowBytes() const { return width * PixelBytes() + padding; }
    int Pitch() const { return bottomUp ? -RowBytes() : RowBytes(); }
    std::size_t Bytes() const { return static_cast<std::size_t>(RowBytes() * height); }
    unsigned char* TopRow(unsigned char* block) const { return block + (bottomUp ? RowBytes() * (height - 1) : 0); }
};

std::ostream& operator<<(std::ostream& stream, const Picture& picture) {
    return stream << picture.width << " by " << picture.height << ", format " << picture.format << ", pitch "
                  << picture.Pitch();
}

constexpr Job kJobs[] = {
    {Operation::Blur, 1},
    {Operation::Blur, 3},
    {Operation::Blur, 5},
    {Operation::Blur, 8},
    {Operation::MotionBlur, 15, 30},
    {Operation::MotionBlur, 4, 180},
    {Operation::MotionBlur, 5, -30},
    {Operation::DeBlur, 1},
    {Operation::DeBlur, 3},
    {Operation::DeBlur, 10},
};

constexpr Picture kPictures[] = {
    {67, 41, FoPixelFmt_BGR24},          {67, 41, FoPixelFmt_BGRX32},         {201, 7, FoPixelFmt_BGR24, 1},
    {195, 7, FoPixelFmt_BGRX32, 8},      {37, 31, FoPixelFmt_BGR24, 0, true}, {37, 31, FoPixelFmt_BGRX32, 5, true},
    {32, 33, FoPixelFmt_BGR24, 7, true}, {5, 3, FoPixelFmt_BGR24, 2},         {3, 1, FoPixelFmt_BGRX32},
    {1, 40, FoPixelFmt_BGR24, 4},        {4, 40, FoPixelFmt_BGRX32, 0, true}, {1, 1, FoPixelFmt_BGR24},
};

class FocusOperationsTest : public VectorClassTest {};

TEST_P(FocusOperationsTest, EqualSplitPlainFilterAndMerge) {
    for (const Job& job : kJobs) {
        const ChMatrix<float> kernel = job.Kernel();
        for (const Picture& picture : kPictures) {
            GuardedBuffer<std::uint8_t> pixels(picture.Bytes(), 1);
            FillRandom(pixels, 21);
            GuardedBuffer<std::uint8_t> expected(picture.Bytes());
            std::copy_n(pixels.data(), pixels.size(), expected.data());
            reference::ConvolvePicture(picture.TopRow(expected.data()), picture.width, picture.height,
                                       picture.PixelBytes(), picture.Pitch(), kernel);
            CImageFocus focus;
            focus.SetSize(picture.width, picture.height);
            job.Run(focus, picture.TopRow(pixels.data()), picture.format, picture.Pitch());
            // The whole block is compared, so that the fourth bytes and the padding must come back as they were.
            EXPECT_TRUE(SameBytes(expected, pixels, static_cast<std::size_t>(picture.RowBytes())))
                << job << ", " << picture << " (row and column are those of the bytes)";
            EXPECT_TRUE(pixels.GuardsIntact()) << job << ", " << picture;
        }
    }
}

CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(FocusOperationsTest);

TEST(FocusOperations, ForeignFormatsLeaveThePixels) {
    for (const Job& job : {kJobs[1], kJobs[4], kJobs[8]}) {
        for (const int format : {2, -1, 77}) {
            GuardedBuffer<std::uint8_t> pixels(40 * 4 * 40);
            FillRandom(pixels, 22);
            GuardedBuffer<std::uint8_t> before(pixels.size());
            std::copy_n(pixels.data(), pixels.size(), before.data());
            CImageFocus focus;
            focus.SetSize(40, 40);
            job.Run(focus, pixels.data(), static_cast<FoPixelFmt>(format), 160);
            EXPECT_TRUE(SameBytes(before, pixels)) << job << ", format " << format;
            job.Run(focus, nullptr, static_cast<FoPixelFmt>(format), 160); // not even read
        }
    }
}

// The sum of a window passes 2^31 from a certain brightness on: required behaviour, shown here from its own table.
TEST(FocusOperations, BlurWrapsAt32Bits) {
    struct Row {
        int radius;
        int value;
        int interior;
    };
    constexpr Row rows[] = {
        {1, 255, 255}, {2, 255, 255}, {3, 255, 255}, {4, 255, 255}, {5, 255, 255}, {5, 1, 1},
        {6, 221, 221}, {6, 222, 0},   {6, 255, 0},   {7, 165, 165}, {7, 166, 0},   {8, 128, 128},
        {8, 129, 0},   {9, 102, 102}, {9, 103, 0},   {9, 255, 49},  {10, 84, 84},  {10, 85, 0},
    };
    for (const Row& row : rows) {
        const int side = 2 * row.radius + 5;
        std::vector<unsigned char> pixels(static_cast<std::size_t>(3 * side * side),
                                          static_cast<unsigned char>(row.value));
        CImageFocus focus;
        focus.SetSize(side, side);
        focus.SetRadius(row.radius);
        focus.Blur(pixels.data(), FoPixelFmt_BGR24, 3 * side);
        for (int y = 0; y < side; ++y) {
            for (int x = 0; x < side; ++x) {
                const int nearX = std::min(x, side - 1 - x);
                const int nearY = std::min(y, side - 1 - y);
                const int actual = pixels[static_cast<std::size_t>(3 * (y * side + x))];
                const auto where = ::testing::Message() << "radius " << row.radius << ", value " << row.value
                                                        << ", column " << x << ", row " << y;
                if (std::min(nearX, nearY) >= row.radius) {
                    EXPECT_EQ(actual, row.interior) << where;
                } else if (nearX + nearY == 0) { // corners weigh too little to wrap
                    EXPECT_EQ(actual, row.value) << where;
                }
            }
        }
    }
}

TEST(FocusOperations, ConstantPicturesStay) {
    for (const Job& job : {kJobs[0], kJobs[1], kJobs[2], kJobs[4], kJobs[5], kJobs[6], kJobs[8]}) {
        for (const int value : {0, 1, 128, 255}) {
            const std::vector<unsigned char> before(37 * 4 * 33, static_cast<unsigned char>(value));
            std::vector<unsigned char> pixels = before;
            CImageFocus focus;
            focus.SetSize(37, 33);
            job.Run(focus, pixels.data(), FoPixelFmt_BGRX32, 37 * 4);
            EXPECT_EQ(pixels, before) << job << ", value " << value;
        }
    }
}

} // namespace
