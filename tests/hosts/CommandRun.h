// Runs the built command in a folder of its own and collects what it says and leaves behind.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

/// A new empty folder, writable for all, removed at the end.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::filesystem::path operator/(const std::string& name) const { return m_Path / name; }
    const std::filesystem::path& Path() const { return m_Path; }

    /// The bytes of every file in it, by name; folders and links have none.
    std::map<std::string, std::string> Snapshot() const;

private:
    std::filesystem::path m_Path;
};

std::string ReadFile(const std::filesystem::path& path);
void WriteFile(const std::filesystem::path& path, const std::string& bytes);

struct RunOptions {
    bool asNobody = false;           ///< gives up the rights of root, if it has them
    bool onTerminal = false;         ///< standard error is a terminal
    std::string outFile = {};        ///< stands for standard output; none: it is collected
    std::size_t fileSize = 0;        ///< limit in bytes of each file written; 0 for none
    std::size_t addressSpace = 0;    ///< limit in bytes of memory; 0 for none
    std::size_t openFiles = 0;       ///< limit; 0 for none
    std::size_t processes = 0;       ///< limit of the user's processes and threads; 0 for none, and root has none
    const char* input = "/dev/null"; ///< read as standard input, by a path from the folder
    std::vector<int> closed = {};    ///< descriptors that the command starts without
    std::vector<std::string> environment = {}; ///< NAME=VALUE, beside what there is
    std::function<void(pid_t)> meanwhile = [](pid_t) {};
};

struct RunResult {
    int status = -1; ///< exit status, or 128 + the signal that ended it
    std::string out;
    std::string err;

    std::size_t ErrorLines() const;
};

/// Runs `claribox` in `folder` with the words of `line`, apart by blanks; one with blanks of its own, or with nothing
/// at all, stands in quotes.
RunResult RunCommand(const TemporaryFolder& folder, const std::string& line, const RunOptions& options = {});

/// Whether not even `info` runs under these limits: sanitizers take threads and address space of their own.
bool IsTooTight(const RunOptions& options);
