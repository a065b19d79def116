// Where pictures are written to: folders, templates, formats, standard output, pipes, and what killed runs left.
#include "CommandRun.h"
#include "TestPictures.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

TEST(Outputs, AreNamedByFolderTemplateAndFormat) {
    struct Row {
        const char* line;
        const char* output;
        const char* reader;
    };
    const TemporaryFolder folder;
    Save(RandomPicture(30, 20, 3, 1), folder / "in.png");
    fs::create_directory(folder / "there");
    fs::create_symlink("behind.png", folder / "link.png");
    for (const Row& row : {Row{"-o new/", "new/in.png", "pngload"},
                           {"-o there", "there/in.png", "pngload"},
                           {"-o other/{name}-sharp.{ext}", "other/in-sharp.png", "pngload"},
                           {"-o {name}.{ext} --format webp", "in.webp", "webpload"},
                           {"-o there --format jpg", "there/in.jpg", "jpegload"},
                           {"-o link.png --force", "behind.png", "pngload"}}) {
        SCOPED_TRACE(row.line);
        const RunResult result = RunCommand(folder, "blur in.png " + std::string(row.line));
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(Load(folder / row.output).get_string(VIPS_META_LOADER), std::string(row.reader));
    }
}

TEST(Outputs, GoToStandardOutputAndToPipesOnceTheyAreRead) {
    const TemporaryFolder folder;
    Save(RandomPicture(30, 20, 3, 1), folder / "in.png");
    ASSERT_EQ(RunCommand(folder, "blur in.png -o out.png").status, 0);
    ASSERT_EQ(RunCommand(folder, "blur in.png -o out.jpg").status, 0);
    EXPECT_TRUE(RunCommand(folder, "blur in.png -o -").out == ReadFile(folder / "out.png"));
    EXPECT_TRUE(RunCommand(folder, "blur in.png -o - --format jpg").out == ReadFile(folder / "out.jpg"));
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    std::string read;
    const RunResult result =
        RunCommand(folder, "blur in.png -o pipe", {.meanwhile = [&](pid_t) { read = ReadFile(folder / "pipe"); }});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(read == ReadFile(folder / "out.png"));
}

TEST(Outputs, OfDeadProcessesAreSweptAndOthersStay) {
    const TemporaryFolder folder;
    Save(RandomPicture(30, 20, 3, 1), folder / "in.png");
    for (const char* name : {".claribox-1-0", ".claribox-1-1.png", ".claribox-2-0", ".claribox-notes"}) {
        WriteFile(folder / name, "left");
    }
    const int alive = open((folder / ".claribox-2-0").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(flock(alive, LOCK_EX), 0);
    EXPECT_EQ(RunCommand(folder, "blur in.png -o out.png").status, 0);
    close(alive);
    std::string names;
    for (const auto& [name, bytes] : folder.Snapshot()) {
        names += name + " ";
    }
    EXPECT_EQ(names, ".claribox-2-0 .claribox-notes in.png out.png ");
}

} // namespace
