// Which variant is selected, what every entry does to the x87 control word, and SSCAL.
#include "dft/dispatch/dft_dispatch.h"

#include "dft/TestSurroundings.h"
#include "dft/dft.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace {

using dft::DftDescriptor;

TEST(Dispatch, VariantOfOverride) {
    struct Row {
        const char* value;
        int code;
    };
    const Row rows[] = {{"0", 0},    {"1", 1},   {"2", 2},   {"3", 3},   {" 2", 2},         {"+1", 1},  {"3x", 3},
                        {"02", 2},   {"00", -1}, {"+0", -1}, {"0 ", -1}, {"4", -1},         {"-1", -1}, {"", -1},
                        {"two", -1}, {"10", -1}, {"1e1", 1}, {"99", -1}, {"4294967297", -1}};
    for (const Row& row : rows) {
        EXPECT_EQ(dft::dft_variant_of_override(row.value), row.code) << '"' << row.value << '"';
    }
    EXPECT_EQ(dft::dft_variant_of_override(std::string(40, '9').c_str()), -1);
    EXPECT_EQ(dft::dft_variant_of_override((std::string(31, ' ') + '2').c_str()), 2);
    EXPECT_EQ(dft::dft_variant_of_override((std::string(32, ' ') + '2').c_str()), -1);
}

TEST(Dispatch, VariantOfProcessor) {
    struct Row {
        const char* vendor;
        std::uint32_t eax, ebx, ecx;
        int code;
    };
    const Row rows[] = {
        {"GenuineIntel", 0x00000F00, 0, 0, 2},          // family 15
        {"GenuineIntel", 0x00000F00, 0, 0xFFFFFFFE, 2}, // everything but SSE3
        {"GenuineIntel", 0x00000FF0, 0, 1, 3},          // SSE3
        {"GenuineIntel", 0x00000F00, 0x10, 1, 3},       // the family before the brand
        {"GenuineIntel", 0x00000600, 0x10, 1, 2},       // brand
        {"GenuineIntel", 0x00000600, 0xFFFFFF17, 0, 2}, // its low three bits and the other bytes do not count
        {"GenuineIntel", 0x00000600, 0x18, 0, 0},       // another brand
        {"GenuineIntel", 0x00000600, 0x1000, 0, 0},     // not the low byte
        {"GenuineIntel", 0x00000660, 0, 1, 0},          // model 6
        {"GenuineIntel", 0x00000670, 0, 0, 1},          // model 7
        {"GenuineIntel", 0x00000570, 0, 0, 1},          // whatever the family
        {"GenuineIntel", 0x00000540, 0, 0, 0},
        {"GenuineIntel", 0x000606A6, 0x0100800, 1, 1}, // a model past 15 by its low four bits: here 10
        {"GenuineIntel", 0x00050654, 0x0100800, 1, 0}, // 5
        {"AuthenticAMD", 0x00000F70, 0x10, 1, 0},
        {"GenuineIntek", 0x00000F70, 0x10, 1, 0},
    };
    for (const Row& row : rows) {
        dft::ProcessorIdentity processor = {true, {}, row.eax, row.ebx, row.ecx};
        std::memcpy(processor.vendor, row.vendor, sizeof(processor.vendor));
        EXPECT_EQ(dft::dft_variant_of_processor(processor), row.code)
            << row.vendor << std::hex << ' ' << row.eax << ' ' << row.ebx << ' ' << row.ecx;
        processor.has_cpuid = false;
        EXPECT_EQ(dft::dft_variant_of_processor(processor), 0) << "without CPUID";
    }
}

TEST(Dispatch, TheVariantIsSelectedOnce) {
    const TestNumber unselected(dft::dft_variant_code, -1);
    TestVariable variable("CLARIBOX_DFT_VARIANT", nullptr);
    const int ofProcessor = dft::dft_select_variant();
    for (const int code : {0, 1, 2, 3}) {
        dft::dft_variant_code = -1;
        variable.Set(std::to_string(code).c_str());
        EXPECT_EQ(dft::dft_select_variant(), code);
        EXPECT_EQ(dft::dft_variant_code, code);
        variable.Set(std::to_string(3 - code).c_str());
        EXPECT_EQ(dft::dft_select_variant(), code) << "read again";
        EXPECT_EQ(&dft::dft_tuning(), &dft::dft_tuning_of(code));
    }
    dft::dft_variant_code = -1;
    variable.Set("4");
    EXPECT_EQ(dft::dft_select_variant(), ofProcessor);
}

std::uint16_t ControlWord() {
    std::uint16_t word = 0;
    asm volatile("fnstcw %0" : "=m"(word));
    return word;
}

void LoadControlWord(std::uint16_t word) {
    asm volatile("fldcw %0" : : "m"(word));
}

std::uint16_t wordInside;

std::int32_t NoteControlWord(void*, void*, DftDescriptor*, void*) {
    wordInside = ControlWord();
    return dft::DFT_OK;
}

TEST(Dispatch, TheControlWordOfTheCallerIsIntact) {
    DftDescriptor* handle = nullptr;
    DftDescriptor* none = nullptr;
    dft::Complex<float> data[16] = {};
    const int count = 4;
    const float scale = 2;
    const int lengths[8] = {2, 2, 2, 2, 2, 2, 2, 2};
    struct Row {
        const char* call;
        std::function<int()> run;
        int status;
    };
    const Row rows[] = {
        {"create", [&] { return dft::dfti_create_descriptor(&handle, 35, 32, 1, 16); }, 0},
        {"compute before commit", [&] { return dft::dfti_compute_forward(handle, data); }, 2},
        {"commit", [&] { return dft::dfti_commit_descriptor(handle); }, 0},
        {"forward", [&] { return dft::dfti_compute_forward(handle, data); }, 0},
        {"backward", [&] { return dft::dfti_compute_backward(handle, data); }, 0},
        {"forward of null", [&] { return dft::dfti_compute_forward(handle, nullptr); }, 3},
        {"backward by null", [&] { return dft::dfti_compute_backward(nullptr, data); }, 3},
        {"commit of null", [&] { return dft::dfti_commit_descriptor(nullptr); }, 3},
        {"create of rank 8", [&] { return dft::dfti_create_descriptor(&none, 35, 32, 8, lengths); }, 3},
        {"create of domain 34", [&] { return dft::dfti_create_descriptor(&none, 35, 34, 1, 16); }, 6},
        {"SSCAL",
         [&] {
             dft::SSCAL(&count, &scale, &data[0].re, &count);
             return 0;
         },
         0},
        {"noted forward",
         [&] {
             handle->forward_single = NoteControlWord;
             return dft::dfti_compute_forward(handle, data);
         },
         0},
        {"free", [&] { return dft::dfti_free_descriptor(&handle); }, 0},
        {"free of null", [&] { return dft::dfti_free_descriptor(&handle); }, 3},
    };
    const std::uint16_t before = ControlWord();
    for (const std::uint16_t word : std::initializer_list<std::uint16_t>{0x007F, 0x0F7F, 0x037F, 0x0C7F}) {
        for (const Row& row : rows) {
            LoadControlWord(word);
            const int status = row.run();
            const std::uint16_t after = ControlWord();
            LoadControlWord(before);
            EXPECT_EQ(status, row.status) << row.call;
            // Bit 6 has no meaning, and processors may read it as set.
            EXPECT_EQ(after | 0x40, word | 0x40) << row.call << std::hex << ", word " << word;
        }
        EXPECT_EQ(wordInside, 0x037F);
    }
}

TEST(Sscal, ScalesEveryElementOfItsIncrementAndNoOther) {
    struct Row {
        int count;
        int increment;
    };
    for (const Row& row : {Row{5, 1}, {5, -1}, {3, 2}, {3, -2}, {2, 7}, {1, -3}, {100, 1}, {0, 1}, {-1, 1}, {-5, -2}}) {
        std::vector<float> x(120), expected(120);
        const int step = std::abs(row.increment);
        for (int i = 0; i < 120; ++i) {
            const bool scaled = i % step == 0 && i / step < row.count;
            x[static_cast<std::size_t>(i)] = static_cast<float>(i + 1);
            expected[static_cast<std::size_t>(i)] = static_cast<float>(i + 1) * (scaled ? 0.75f : 1.0f);
        }
        const float scale = 0.75f;
        dft::SSCAL(&row.count, &scale, x.data(), &row.increment);
        EXPECT_EQ(x, expected) << "count " << row.count << ", increment " << row.increment;
    }
}

} // namespace
