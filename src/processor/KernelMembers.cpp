#include "processor/KernelMembers.h"

#include "processor/PlainSet.h"
#include "processor/ProcessorCensus.h"
#include "processor/VectorMembers.h"

using namespace processor;

KernelTableSlots KernelMembers(ProcessorClass processorClass) {
    KernelTableSlots members = plainSet;
    if (processorClass >= ProcessorClass::MMX) {
        members.PackS32ToU8 = mmx::PackS32ToU8;
        members.DecimateU8 = mmx::DecimateU8;
    }
    if (processorClass >= ProcessorClass::SSE) {
        members.Copy = sse::StreamingCopy;
        members.PackF32ToU8 = sse::PackF32ToU8;
        members.ExpandU8ToF32 = sse::ExpandU8ToF32;
        members.ScaleF32 = sse::ScaleF32;
        members.DotF32 = sse::DotF32;
        members.ExpandU8ToComplex = sse::ExpandU8ToComplex;
        members.PackComplexToU8 = sse::PackComplexToU8;
        members.ExpandF32ToComplex = sse::ExpandF32ToComplex;
    }
    if (processorClass >= ProcessorClass::SSE2) {
        members.PackS32ToU8 = sse2::PackS32ToU8;
        members.PackF32ToU8 = sse2::PackF32ToU8;
        members.ExpandU8ToF32 = sse2::ExpandU8ToF32;
        members.DecimateU8 = sse2::DecimateU8;
        members.ExpandU8ToComplex = sse2::ExpandU8ToComplex;
        members.PackComplexToU8 = sse2::PackComplexToU8;
    }
    return members;
}

ProcessorClass ProcessorClassOf(bool hasMMX, bool hasSSE, bool hasSSE2) {
    if (hasSSE2) {
        return ProcessorClass::SSE2;
    }
    if (hasSSE) {
        return ProcessorClass::SSE;
    }
    return hasMMX ? ProcessorClass::MMX : ProcessorClass::Plain;
}

ProcessorClass ActiveProcessorClass() {
    return ProcessorClassOf(ProcessorHasMMX() != 0, ProcessorHasSSE() != 0, ProcessorHasSSE2() != 0);
}

const char* ProcessorClassName(ProcessorClass processorClass) {
    static constexpr const char* names[] = {"plain", "MMX", "SSE", "SSE2"};
    return names[static_cast<int>(processorClass)];
}
