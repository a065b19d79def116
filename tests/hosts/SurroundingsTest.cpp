// Machines that grant little: closed descriptors, few files, threads and bytes, fonts without a cache. The command
// makes the picture that it makes elsewhere, or says in one line why not, and leaves nothing else.
#include "CommandRun.h"
#include "TestPictures.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

struct Surroundings {
    std::string line; ///< without its output
    RunOptions options;
    std::string refusal = {}; ///< a part of the line that is expected in the place of a picture, if that is certain
};

constexpr std::size_t kMebibyte = std::size_t{1} << 20;

void ExpectThePictureOrOneLine(const TemporaryFolder& folder, const Surroundings& row) {
    fs::remove(folder / "reference.png");
    const RunOptions ample = {.environment = row.options.environment};
    ASSERT_EQ(RunCommand(folder, row.line + " reference.png -q", ample).status, 0);
    const RunResult result = RunCommand(folder, row.line + " out.png -q", row.options);
    if (!row.refusal.empty() || result.status != 0) {
        EXPECT_EQ(result.status, 1) << result.err;
        EXPECT_EQ(result.ErrorLines(), 1u) << result.err;
        EXPECT_NE(result.err.find(row.refusal), std::string::npos) << result.err;
        EXPECT_FALSE(fs::exists(folder / "out.png"));
    } else {
        EXPECT_EQ(result.err, "");
        EXPECT_TRUE(ReadFile(folder / "out.png") == ReadFile(folder / "reference.png"));
        fs::remove(folder / "out.png");
    }
}

TEST(Surroundings, GiveThePictureOrOneLine) {
    const TemporaryFolder folder;
    const vips::VImage picture = RandomPicture(600, 400, 3, 1);
    Save(picture, folder / "in.png");
    Save(picture.cast(VIPS_FORMAT_USHORT), folder / "deep.png");
    // No cache of fonts can be written, and libraries say so.
    WriteFile(folder / "fonts.conf",
              "<fontconfig><dir>/usr/share/fonts</dir><cachedir>/proc/none</cachedir></fontconfig>");
    std::vector<Surroundings> rows = {
        {"blur deep.png -o", {.closed = {2}}},
        {"blur deep.png -o", {.closed = {1, 2}}},
        {"blur deep.png -o", {.closed = {0, 1, 2}}},
        {"guess-motion in.png --plot",
         {.environment = {"FONTCONFIG_FILE=" + (folder / "fonts.conf").string(), "XDG_CACHE_HOME=/proc"}}},
        {"blur in.png -o", {.openFiles = 4}, "only 4 files may be open"},
    };
    for (std::size_t processes = 1; processes <= 6; ++processes) {
        for (const char* line : {"deblur in.png -o", "demotion-blur --exact in.png -o"}) {
            rows.push_back({line, {.asNobody = true, .processes = processes}});
        }
    }
    for (std::size_t space = 320; space <= 440; space += 20) {
        rows.push_back({"demotion-blur --exact in.png -o", {.addressSpace = space * kMebibyte}});
    }
    for (const Surroundings& row : rows) {
        SCOPED_TRACE(row.line + ", processes " + std::to_string(row.options.processes) + ", address space " +
                     std::to_string(row.options.addressSpace / kMebibyte));
        if (!IsTooTight(row.options)) {
            ExpectThePictureOrOneLine(folder, row);
        }
    }
}

} // namespace
