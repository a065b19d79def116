#include "processor/KernelTable.h"

#include "processor/LoadOrder.h"
#include "processor/MembersTest.h"

#include <cstring>
#include <numbers>

namespace {

using enum ProcessorClass;

/// Whether two sets have the same function in a slot.
struct Slot {
    const char* name;
    bool (*same)(const KernelTableSlots& first, const KernelTableSlots& second);
    ProcessorClass changes[2]; ///< the classes that bring a member of their own; `Plain` stands for none
    bool filledByBase;
};

#define SLOT(name) #name, [](const KernelTableSlots& a, const KernelTableSlots& b) { return a.name == b.name; }

const Slot kSlots[] = {
    {SLOT(Copy), {SSE, Plain}, true},
    {SLOT(PackS32ToU8), {MMX, SSE2}, true},
    {SLOT(PackF32ToU8), {SSE, SSE2}, true},
    {SLOT(ExpandU8ToF32), {SSE, SSE2}, true},
    {SLOT(ScaleF32), {SSE, Plain}, false},
    {SLOT(DotF32), {SSE, Plain}, false},
    {SLOT(DecimateU8), {MMX, SSE2}, false},
    {SLOT(ExpandU8ToComplex), {SSE, SSE2}, false},
    {SLOT(PackComplexToU8), {SSE, SSE2}, false},
    {SLOT(ExpandF32ToComplex), {SSE, Plain}, false},
};

TEST(KernelMembers, EachClassChangesTheSlotsThatAreItsOwn) {
    for (const Slot& slot : kSlots) {
        SCOPED_TRACE(slot.name);
        EXPECT_EQ(slot.same(KernelMembers(MMX), KernelMembers(Plain)), slot.changes[0] != MMX);
        EXPECT_EQ(slot.same(KernelMembers(SSE), KernelMembers(MMX)), slot.changes[0] != SSE);
        EXPECT_EQ(slot.same(KernelMembers(SSE2), KernelMembers(SSE)), slot.changes[1] != SSE2);
        EXPECT_TRUE(slot.same(KernelTable, KernelMembers(ActiveProcessorClass())));
    }
}

TEST(ProcessorClassOf, FirstSetFlagOfSSE2AndSSEAndMMXDecides) {
    constexpr ProcessorClass classes[] = {Plain, MMX, SSE, SSE, SSE2, SSE2, SSE2, SSE2};
    for (int flags = 0; flags < 8; ++flags) {
        EXPECT_EQ(ProcessorClassOf((flags & 1) != 0, (flags & 2) != 0, (flags & 4) != 0), classes[flags]) << flags;
    }
    EXPECT_EQ(ActiveProcessorClass(), ProcessorClassOf(IsSupported(MMX), IsSupported(SSE), IsSupported(SSE2)));
    for (const auto& [processorClass, name] : {std::pair{Plain, "plain"}, {MMX, "MMX"}, {SSE, "SSE"}, {SSE2, "SSE2"}}) {
        EXPECT_STREQ(ProcessorClassName(processorClass), name);
    }
}

TEST(KernelTable, IsFilledByTheTwoDestructors) {
    const KernelTableSlots before = KernelTable;
    KernelTable = {};
    { const KernelTableBase base; }
    for (const Slot& slot : kSlots) {
        EXPECT_TRUE(slot.same(KernelTable, slot.filledByBase ? before : KernelTableSlots{})) << slot.name;
    }
    { const KernelTableFiller filler; }
    for (const Slot& slot : kSlots) {
        EXPECT_TRUE(slot.same(KernelTable, before)) << slot.name;
    }
    KernelTable = before;
}

TEST(LoadOrder, ConstantGroupHoldsTheNearestFloats) {
    const processor::ConstantGroup group;
    const float expected[] = {2.0f * std::numbers::pi_v<float>, std::numbers::sqrt2_v<float>,
                              std::numbers::ln2_v<float>};
    EXPECT_TRUE(sizeof group == sizeof expected && std::memcmp(&group, expected, sizeof expected) == 0);
}

} // namespace
