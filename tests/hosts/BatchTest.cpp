// Several pictures in one run: failures beside successes, replacement, progress, and being interrupted.
#include "CommandRun.h"
#include "TestPictures.h"

#include <gtest/gtest.h>

#include <signal.h>

#include <chrono>
#include <thread>

namespace fs = std::filesystem;

namespace {

TEST(Batch, OneBadPictureDoesNotStopTheOthers) {
    for (const char* jobs : {"1", "4"}) {
        SCOPED_TRACE(jobs);
        const TemporaryFolder folder;
        std::string line = "blur none.png bad.png -o out --jobs " + std::string(jobs);
        WriteFile(folder / "bad.png", "no picture");
        for (int k = 0; k < 8; ++k) {
            const std::string name = std::to_string(k) + ".png";
            Save(RandomPicture(30, 20, 3, static_cast<unsigned>(k)), folder / name);
            line += " " + name;
        }
        const RunResult result = RunCommand(folder, line);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.ErrorLines(), 3u) << result.err;
        EXPECT_NE(result.err.find("none.png: no such file"), std::string::npos);
        EXPECT_NE(result.err.find("bad.png: is no picture"), std::string::npos);
        EXPECT_NE(result.err.find("claribox: 8 of 10 pictures written, 2 failed\n"), std::string::npos) << result.err;
        EXPECT_EQ(result.err.find('['), std::string::npos) << "a bar without a terminal";
        const auto blur = [](auto& focus, auto... rest) { focus.Blur(rest...); };
        for (int k = 0; k < 8; ++k) {
            const std::string name = std::to_string(k) + ".png";
            EXPECT_EQ(Samples(Load(folder / ("out/" + name))), Samples(Expected(Load(folder / name), blur))) << name;
        }
        EXPECT_EQ(std::distance(fs::directory_iterator(folder / "out"), {}), 8);
    }
}

TEST(Batch, ShowsABarOnATerminalAndTakesItAwayBeforeTheSummary) {
    const TemporaryFolder folder;
    for (const char* name : {"a.png", "b.png"}) {
        Save(RandomPicture(30, 20, 3, 1), folder / name);
    }
    const RunResult result = RunCommand(folder, "blur a.png b.png -o out", {.onTerminal = true});
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.err.find("] 1 of 2"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("\r\033[Kclaribox: 2 of 2 pictures written, 0 failed"), std::string::npos) << result.err;
    const RunResult single = RunCommand(folder, "blur a.png -o c.png", {.onTerminal = true});
    EXPECT_EQ(single.err, "");
    const RunResult quiet = RunCommand(folder, "blur -q --radius 6 a.png b.png -o quiet", {.onTerminal = true});
    EXPECT_EQ(quiet.err, "");
    EXPECT_EQ(quiet.status, 0);
}

TEST(Batch, ForceReplacesTheFileBehindALinkAndKeepsItsPermissions) {
    const TemporaryFolder folder;
    Save(RandomPicture(30, 20, 3, 1), folder / "in.png");
    WriteFile(folder / "old.png", "old");
    fs::permissions(folder / "old.png", fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink("old.png", folder / "link.png");
    const RunResult result = RunCommand(folder, "blur in.png -o link.png --force");
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(fs::is_symlink(folder / "link.png"));
    EXPECT_EQ(Load(folder / "old.png").width(), 30);
    EXPECT_EQ(fs::status(folder / "old.png").permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

/// Asked to stop while most pictures are still to come, by terminal and by system alike.
TEST(Batch, InterruptLeavesWholePicturesAndNothingElse) {
    for (const int signalNumber : {SIGINT, SIGTERM}) {
        SCOPED_TRACE(signalNumber);
        const TemporaryFolder folder;
        std::string line = "deblur --radius 10 --jobs 2 -o out";
        const vips::VImage picture = RandomPicture(900, 700, 3, 1);
        Save(picture, folder / "0.png");
        for (int k = 0; k < 24; ++k) {
            const std::string name = std::to_string(k) + ".png";
            WriteFile(folder / name, ReadFile(folder / "0.png"));
            line += " " + name;
        }
        const auto interruptAfterTheFirst = [&](pid_t child) {
            for (int wait = 0; wait < 6000 && !fs::exists(folder / "out/0.png"); ++wait) {
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
            kill(child, signalNumber);
        };
        const RunResult result = RunCommand(folder, line, {.meanwhile = interruptAfterTheFirst});
        EXPECT_EQ(result.status, 130) << result.err;
        std::size_t written = 0;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder / "out")) {
            EXPECT_NE(entry.path().filename().string().front(), '.') << "a temporary file is left";
            EXPECT_EQ(Samples(Load(entry.path())).size(), Samples(picture).size());
            ++written;
        }
        EXPECT_LT(written, 24u);
        const std::string count = std::to_string(written);
        EXPECT_NE(result.err.find("interrupted: " + count + " of 24 pictures written, 0 failed, "), std::string::npos)
            << result.err;
    }
}

TEST(Command, AnswersQuestionsOnStandardOutput) {
    const TemporaryFolder folder;
    Save(RandomPicture(30, 20, 3, 1), folder / "in.png");
    for (const auto& [line, fragment] : {std::pair{"--version", "claribox "},
                                         {"-V", "claribox "},
                                         {"--help", "motion-blur"},
                                         {"help", "motion-blur"},
                                         {"help blur", "--radius"},
                                         {"info", "cores per package"},
                                         {"info --json", "\"version\""},
                                         {"guess-motion in.png", "degree"},
                                         {"--man", ".SS motion\\-blur"}}) {
        SCOPED_TRACE(line);
        const RunResult result = RunCommand(folder, line);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        EXPECT_NE(result.out.find(fragment), std::string::npos) << result.out;
        const RunResult full = RunCommand(folder, line, {.outFile = "/dev/full"});
        EXPECT_EQ(full.status, 1);
        EXPECT_EQ(full.err, "claribox: standard output cannot be written: No space left on device\n");
    }
}

} // namespace
