// A fixture that runs each of its tests once for every vector class of the library.
//
//     class SomethingTest : public VectorClassTest {};
//     TEST_P(SomethingTest, EqualsThePlainForm) { ... }
//     CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(SomethingTest);
#pragma once

#include "common/ForcedVectorClass.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <string>

/// Puts the class named by the parameter in force for the length of one test, and makes sure that it is. A class that
/// this machine cannot run is reported as skipped, under its name.
class VectorClassTest : public ::testing::TestWithParam<simd::VectorClass> {
protected:
    void SetUp() override {
        if (!simd::IsSupported(GetParam())) {
            GTEST_SKIP() << simd::Name(GetParam()) << " is not available on this machine";
        }
        ASSERT_EQ(simd::ActiveVectorClass(), GetParam());
    }

private:
    const ForcedVectorClass m_Forced{GetParam()};
};

/// The class's name with letters and digits alone, as test names want it.
inline std::string VectorClassTestName(const ::testing::TestParamInfo<simd::VectorClass>& info) {
    std::string name = simd::Name(info.param);
    std::erase_if(name, [](unsigned char c) { return std::isalnum(c) == 0; });
    return name;
}

#define CLARIBOX_INSTANTIATE_FOR_VECTOR_CLASSES(Suite)                                                                 \
    INSTANTIATE_TEST_SUITE_P(VectorClasses, Suite, ::testing::ValuesIn(simd::kVectorClasses), VectorClassTestName)
