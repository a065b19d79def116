#include "CommandRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <set>
#include <sstream>

namespace {

using nlohmann::json;

const struct {
    const char* label;
    const char* key;
    json::value_t type;
} rows[] = {
    {"claribox", "version", json::value_t::string},
    {"vendor", "vendor", json::value_t::string},
    {"name", "name", json::value_t::string},
    {"family", "family", json::value_t::number_unsigned},
    {"model", "model", json::value_t::number_unsigned},
    {"stepping", "stepping", json::value_t::number_unsigned},
    {"clock in MHz", "megahertz", json::value_t::number_unsigned},
    {"flags", "flags", json::value_t::array},
    {"processor packages", "packages", json::value_t::number_unsigned},
    {"cores per package", "cores_per_package", json::value_t::number_unsigned},
    {"threads per core", "threads_per_core", json::value_t::number_unsigned},
    {"status", "status", json::value_t::string},
    {"kernel class", "kernel_class", json::value_t::string},
    {"vector class", "vector_class", json::value_t::string},
    {"DFT variant", "dft_variant", json::value_t::string},
};

/// The lines of the text by their labels, which take 21 columns and a blank.
std::map<std::string, std::string> TextByLabel(const std::string& text) {
    std::map<std::string, std::string> values;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        EXPECT_GT(line.size(), 22U) << line;
        const std::string label = line.substr(0, 21);
        values[label.substr(0, label.find_last_not_of(' ') + 1)] = line.size() > 22 ? line.substr(22) : "";
    }
    return values;
}

std::string AsText(const json& value) {
    if (value.is_null()) {
        return "unknown";
    }
    if (!value.is_array()) {
        return value.is_string() ? value.get<std::string>() : value.dump();
    }
    std::string text;
    for (const json& flag : value) {
        text += (text.empty() ? "" : ", ") + flag.get<std::string>();
    }
    return text.empty() ? "none" : text;
}

TEST(Info, TextAndJsonTellTheSame) {
    const TemporaryFolder folder;
    const RunResult text = RunCommand(folder, "info");
    const RunResult whole = RunCommand(folder, "info --json");
    ASSERT_EQ(text.status, 0) << text.err;
    ASSERT_EQ(whole.status, 0) << whole.err;
    EXPECT_EQ(text.err + whole.err, "");
    const json object = json::parse(whole.out);
    const std::map<std::string, std::string> lines = TextByLabel(text.out);
    EXPECT_EQ(object.size(), std::size(rows));
    EXPECT_EQ(lines.size(), std::size(rows));
    for (const auto& row : rows) {
        SCOPED_TRACE(row.key);
        ASSERT_TRUE(object.contains(row.key));
        ASSERT_TRUE(lines.contains(row.label));
        const json& value = object[row.key];
        const bool mayBeUnknown = std::set<std::string>{"name", "megahertz", "packages"}.contains(row.key);
        EXPECT_TRUE(value.type() == row.type || (mayBeUnknown && value.is_null())) << value;
        // Each run measures the clock anew.
        if (row.key != std::string("megahertz")) {
            EXPECT_EQ(lines.at(row.label), AsText(value));
        }
    }
}

TEST(Info, KernelClassIsTheWidestOfTheFlags) {
    const RunResult run = RunCommand(TemporaryFolder(), "info --json");
    ASSERT_EQ(run.status, 0) << run.err;
    const json object = json::parse(run.out);
    std::string widest = "plain";
    for (const char* name : {"MMX", "SSE", "SSE2"}) {
        if (std::ranges::count(object["flags"], name) != 0) {
            widest = name;
        }
    }
    EXPECT_EQ(object["kernel_class"], widest);
}

} // namespace
