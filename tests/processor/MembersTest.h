// What the tests of the members of `KernelTable` share: a fixture for each processor class, and a look at the MMX
// state.
#pragma once

#include "processor/KernelMembers.h"

#include <gtest/gtest.h>

/// True if this machine can run the members of the class.
inline bool IsSupported(ProcessorClass processorClass) {
    switch (processorClass) {
    case ProcessorClass::MMX:
        return __builtin_cpu_supports("mmx");
    case ProcessorClass::SSE:
        return __builtin_cpu_supports("sse");
    case ProcessorClass::SSE2:
        return __builtin_cpu_supports("sse2");
    default:
        return true;
    }
}

/// Whether no MMX register is in use. One that is would break the next floating-point code of the x87 unit.
inline bool MMXStateIsClear() {
    struct {
        unsigned control, status, tags, others[4];
    } environment;
    // The first instruction also masks all exceptions, hence the second.
    asm volatile("fnstenv %0\n\tfldenv %0" : "=m"(environment));
    return (environment.tags & 0xFFFFu) == 0xFFFFu;
}

/// Runs its tests once for every class; one that this machine cannot run is reported as skipped.
class ProcessorClassTest : public testing::TestWithParam<ProcessorClass> {
protected:
    void SetUp() override {
        if (!IsSupported(GetParam())) {
            GTEST_SKIP() << ProcessorClassName(GetParam()) << " is not available on this machine";
        }
    }

    const KernelTableSlots m_Members = KernelMembers(GetParam());
};

inline std::string ProcessorClassTestName(const testing::TestParamInfo<ProcessorClass>& info) {
    return ProcessorClassName(info.param);
}

#define CLARIBOX_INSTANTIATE_FOR_PROCESSOR_CLASSES(Suite)                                                              \
    INSTANTIATE_TEST_SUITE_P(ProcessorClasses, Suite, testing::ValuesIn(ProcessorClasses), ProcessorClassTestName)
