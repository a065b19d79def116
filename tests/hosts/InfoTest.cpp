#include "CommandRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <set>
#include <sstream>

namespace {

using Json = nlohmann::ordered_json;

std::string AsText(const Json& value) {
    if (!value.is_array()) {
        return value.is_null() ? "unknown" : value.is_string() ? value.get<std::string>() : value.dump();
    }
    std::string text;
    for (const Json& flag : value) {
        text += (text.empty() ? "" : ", ") + flag.get<std::string>();
    }
    return text.empty() ? "none" : text;
}

// The text tells what the object holds, in the same order. Keys that differ from their labels stand behind a slash.
TEST(Info, TextAndJsonTellTheSame) {
    const TemporaryFolder folder;
    const RunResult text = RunCommand(folder, "info");
    const RunResult whole = RunCommand(folder, "info --json");
    EXPECT_EQ(text.err + whole.err, "");
    std::istringstream lines(text.out);
    std::string labels;
    std::string types;
    const Json object = Json::parse(whole.out);
    for (const auto& [key, value] : object.items()) {
        std::string line;
        ASSERT_TRUE(std::getline(lines, line));
        const std::string label = line.substr(0, line.find_last_not_of(' ', 21) + 1);
        labels += label + (key == label ? "" : "/" + key) + "; ";
        const bool isUnknown = value.is_null() && std::set<std::string>{"name", "megahertz", "packages"}.contains(key);
        types += isUnknown ? (key == "name" ? 's' : 'n') : value.type_name()[0];
        // Each run measures the clock anew.
        EXPECT_TRUE(key == "megahertz" || line.substr(22) == AsText(value)) << line << '\n' << value;
    }
    EXPECT_EQ(lines.peek(), EOF);
    EXPECT_EQ(labels, "claribox/version; vendor; name; family; model; stepping; clock in MHz/megahertz; flags; "
                      "processor packages/packages; cores per package/cores_per_package; "
                      "threads per core/threads_per_core; status; kernel class/kernel_class; "
                      "vector class/vector_class; DFT variant/dft_variant; ");
    EXPECT_EQ(types, "sssnnnnannnssss");
}

TEST(Info, KernelClassIsTheWidestOfTheFlags) {
    const RunResult run = RunCommand(TemporaryFolder(), "info --json");
    const Json object = Json::parse(run.out);
    std::string widest = "plain";
    for (const char* name : {"MMX", "SSE", "SSE2"}) {
        widest = std::ranges::count(object["flags"], name) != 0 ? name : widest;
    }
    EXPECT_EQ(object["kernel_class"], widest);
}

} // namespace
