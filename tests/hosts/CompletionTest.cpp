// What bash is told to complete. (The scripts for zsh and fish come from the same tables, and their shells may be
// missing.)
#include "CommandRun.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

TEST(Completion, KnowsVerbsOptionsValuesAndFiles) {
    if (std::system("bash -c :") != 0) {
        GTEST_SKIP() << "there is no bash";
    }
    const TemporaryFolder folder;
    const RunResult script = RunCommand(folder, "--completion bash");
    ASSERT_EQ(script.status, 0) << script.err;
    for (const auto& [words, expected] : {std::pair{"de", "deblur demotion-blur denoise"},
                                          {"--com", "--completion"},
                                          {"--completion ''", "bash zsh fish"},
                                          {"help sp", "spectrum"},
                                          {"blur --ra", "--radius"},
                                          {"blur --radius ''", ""},
                                          {"blur ''", "FILES"},
                                          {"blur -o ''", "FILES"},
                                          {"blur -- -", "FILES"},
                                          {"demotion-blur --degree ''", "auto"},
                                          {"denoise --rule ''", "soft hard garrote"},
                                          {"denoise --rule = h", "hard"},
                                          {"info ''", ""}}) {
        SCOPED_TRACE(words);
        WriteFile(folder / "run", script.out + "compopt() { COMPREPLY+=(FILES); }\nCOMP_WORDS=(claribox " + words +
                                      ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_claribox\n" +
                                      "printf %s \"${COMPREPLY[*]}\" > told\n");
        EXPECT_EQ(std::system(("cd " + folder.Path().string() + " && bash run").c_str()), 0);
        EXPECT_EQ(ReadFile(folder / "told"), expected);
    }
}

} // namespace
