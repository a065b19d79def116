#include "CommandRun.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <grp.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <sstream>
#include <thread>
#include <vector>

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() {
    std::string name = (fs::temp_directory_path() / "claribox-test-XXXXXX").string();
    m_Path = mkdtemp(name.data());
    fs::permissions(m_Path, fs::perms::all);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code none;
    fs::remove_all(m_Path, none);
}

std::map<std::string, std::string> TemporaryFolder::Snapshot() const {
    std::map<std::string, std::string> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(m_Path)) {
        const bool hasBytes = fs::is_regular_file(entry.symlink_status());
        files[entry.path().lexically_relative(m_Path).string()] = hasBytes ? ReadFile(entry.path()) : "";
    }
    return files;
}

std::string ReadFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteFile(const fs::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

std::size_t RunResult::ErrorLines() const {
    return static_cast<std::size_t>(std::ranges::count(err, '\n'));
}

namespace {

void Limit(decltype(RLIMIT_AS) what, std::size_t bytes) {
    if (bytes != 0) {
        const rlimit limit = {bytes, bytes};
        setrlimit(what, &limit);
    }
}

[[noreturn]] void Become(int command, const fs::path& folder, const std::string& line, const RunOptions& options) {
    std::vector<char*> words = {const_cast<char*>("claribox")};
    std::istringstream text(line);
    for (std::string word; text >> std::quoted(word);) {
        words.push_back(strdup(word.c_str()));
    }
    words.push_back(nullptr);
    constexpr id_t nobody = 65534;
    const bool changed = !options.asNobody || geteuid() != 0 ||
                         (setgroups(0, nullptr) == 0 && setgid(nobody) == 0 && setuid(nobody) == 0);
    if (changed && chdir(folder.c_str()) == 0) {
        dup2(open(options.input, O_RDONLY | O_CLOEXEC), STDIN_FILENO);
        if (!options.outFile.empty()) {
            dup2(open(options.outFile.c_str(), O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
        }
        if (options.fileSize + options.addressSpace + options.processes > 0) {
            putenv(strdup("ASAN_OPTIONS=detect_leaks=0")); // it takes a process, and libraries that fail leak
        }
        Limit(RLIMIT_FSIZE, options.fileSize);
        Limit(RLIMIT_AS, options.addressSpace);
        Limit(RLIMIT_NPROC, options.processes);
        for (const std::string& variable : options.environment) {
            putenv(strdup(variable.c_str()));
        }
        for (const int descriptor : options.closed) {
            close(descriptor);
        }
        Limit(RLIMIT_NOFILE, options.openFiles);
        fexecve(command, words.data(), environ);
    }
    _exit(127);
}

std::string ReadAll(int file) {
    std::string text;
    char block[4096];
    for (ssize_t got = read(file, block, sizeof block); got > 0; got = read(file, block, sizeof block)) {
        text.append(block, static_cast<std::size_t>(got));
    }
    close(file);
    return text;
}

} // namespace

RunResult RunCommand(const TemporaryFolder& folder, const std::string& line, const RunOptions& options) {
    int out[2];
    int err[2];
    // Opened here, so that it can be run also by one who may not look into its folder.
    const int command = open(CLARIBOX_COMMAND, O_RDONLY | O_CLOEXEC);
    const bool ready =
        command >= 0 && pipe2(out, O_CLOEXEC) == 0 &&
        (options.onTerminal ? openpty(&err[0], &err[1], nullptr, nullptr, nullptr) == 0 : pipe2(err, O_CLOEXEC) == 0);
    if (!ready) {
        ADD_FAILURE() << "cannot run " << CLARIBOX_COMMAND;
        return {};
    }
    const pid_t child = fork();
    if (child == 0) {
        dup2(out[1], STDOUT_FILENO);
        dup2(err[1], STDERR_FILENO);
        Become(command, folder.Path(), line, options);
    }
    close(command);
    close(out[1]);
    close(err[1]);
    RunResult result;
    std::thread readOut([&] { result.out = ReadAll(out[0]); });
    std::thread readErr([&] { result.err = ReadAll(err[0]); });
    options.meanwhile(child);
    int status = 0;
    waitpid(child, &status, 0);
    readOut.join();
    readErr.join();
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result;
}

bool IsTooTight(const RunOptions& options) {
    return RunCommand(TemporaryFolder(), "info", options).status != 0;
}
