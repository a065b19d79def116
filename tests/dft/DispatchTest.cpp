// Which variant is selected, what every entry does to the x87 control word, and SSCAL.
#include "dft/dispatch/dft_dispatch.h"

#include "dft/TestJob.h"
#include "dft/TestSurroundings.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace {

TEST(Dispatch, VariantOfOverride) {
    const std::map<int, std::vector<std::string>> values = {
        {0, {"0"}},
        {1, {"1", "+1", "1e1"}},
        {2, {"2", " 2", "02", std::string(31, ' ') + '2'}},
        {3, {"3", "3x"}},
        {-1,
         {"00", "+0", "0 ", "4", "-1", "", "two", "10", "99", "4294967297", std::string(40, '9'),
          std::string(32, ' ') + '2'}}};
    for (const auto& [code, spellings] : values) {
        for (const std::string& spelling : spellings) {
            EXPECT_EQ(dft::dft_variant_of_override(spelling), code) << '"' << spelling << '"';
        }
    }
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
    for (const int code : {0, 1, 2, 3, 4}) {
        dft::dft_variant_code = -1;
        variable.Set(std::to_string(code).c_str());
        const int selected = code < dft::kVariants ? code : ofProcessor;
        EXPECT_EQ(dft::dft_select_variant(), selected);
        EXPECT_EQ(dft::dft_variant_code, selected);
        variable.Set(std::to_string(3 - selected).c_str());
        EXPECT_EQ(dft::dft_select_variant(), selected) << "read again";
        EXPECT_EQ(&dft::dft_tuning(), &dft::dft_tuning_of(selected));
    }
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

std::int32_t NoteControlWord(void*, void*, dft::DftDescriptor*, void*) {
    wordInside = ControlWord();
    return dft::DFT_OK;
}

// Of calls that succeed, and of calls that are refused.
TEST(Dispatch, TheControlWordOfTheCallerIsIntact) {
    dft::Complex<float> data[16] = {};
    const int count = 4;
    const float scale = 2;
    dft::DftDescriptor* none = nullptr;
    const std::uint16_t before = ControlWord();
    for (const std::uint16_t word : std::initializer_list<std::uint16_t>{0x007F, 0x0F7F, 0x037F, 0x0C7F}) {
        const Job job(35, 32, {16});
        dft::DftDescriptor* other = nullptr;
        const std::function<void()> calls[] = {
            [&] { dft::dfti_compute_forward(job.handle, data); },
            [&] { dft::dfti_commit_descriptor(job.handle); },
            [&] { dft::dfti_compute_forward(job.handle, data); },
            [&] { dft::dfti_compute_backward(job.handle, data); },
            [&] { dft::dfti_compute_forward(job.handle, nullptr); },
            [&] { dft::dfti_compute_backward(nullptr, data); },
            [&] { dft::dfti_commit_descriptor(nullptr); },
            [&] { dft::SSCAL(&count, &scale, &data[0].re, &count); },
            [&] { Create(&none, 35, 32, Lengths(8, 2)); },
            [&] { Create(&none, 35, 34, {16}); },
            [&] { Create(&other, 35, 32, {16}); },
            [&] { dft::dfti_free_descriptor(&other); },
            [&] { dft::dfti_free_descriptor(&none); },
            [&] {
                job->forward_single = NoteControlWord;
                dft::dfti_compute_forward(job.handle, data);
            },
        };
        for (std::size_t k = 0; k < std::size(calls); ++k) {
            LoadControlWord(word);
            calls[k]();
            const std::uint16_t after = ControlWord();
            LoadControlWord(before);
            // Bit 6 has no meaning, and processors may read it as set.
            EXPECT_EQ(after | 0x40, word | 0x40) << "call " << k << std::hex << ", word " << word;
        }
        EXPECT_EQ(wordInside, 0x037F);
    }
}

TEST(Sscal, ScalesEveryElementOfItsIncrementAndNoOther) {
    struct Row {
        int count, increment;
    };
    for (const Row& row : {Row{5, 1}, {5, -1}, {3, 2}, {3, -2}, {2, 7}, {1, -3}, {100, 1}, {0, 1}, {-1, 1}, {-5, -2}}) {
        std::vector<float> x(120, 3.0f);
        std::vector<float> expected = x;
        for (int i = 0; i < row.count; ++i) {
            expected[static_cast<std::size_t>(i * std::abs(row.increment))] = 2.25f;
        }
        const float scale = 0.75f;
        dft::SSCAL(&row.count, &scale, x.data(), &row.increment);
        EXPECT_EQ(x, expected) << "count " << row.count << ", increment " << row.increment;
    }
}

} // namespace
