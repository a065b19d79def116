// The library counts on a conversion to float being a rounding, also when the result is at once widened again. g++ 12
// loses it where its straight-line vectoriser joins two such conversions, from -O2 on without
// -fno-tree-slp-vectorize. This file is compiled with the flags of the library, so that it fails should they go.
#include <gtest/gtest.h>

namespace {

void RoundPair(const double* source, double* destination) {
    const float first = static_cast<float>(source[0]);
    const float second = static_cast<float>(source[1]);
    destination[0] = static_cast<double>(first);
    destination[1] = static_cast<double>(second);
}

// Called through this, so that the compiler cannot work the results out beforehand.
void (*volatile roundPair)(const double*, double*) = RoundPair;

} // namespace

TEST(FloatStoreTest, PairsOfDoublesAreRoundedToFloat) {
    const double source[2] = {1.0 + 0x1p-24 + 0x1p-40, 1.0 + 0x1p-25}; // one rounds up, one down
    double rounded[2];
    roundPair(source, rounded);
    EXPECT_EQ(rounded[0], 1.0 + 0x1p-23);
    EXPECT_EQ(rounded[1], 1.0);
}
