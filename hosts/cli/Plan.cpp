#include "Plan.h"

#include "Errors.h"
#include "OutputFile.h"
#include "OutputNames.h"
#include "PictureReader.h"
#include "PictureWriter.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <set>

namespace cli {
namespace {

namespace fs = std::filesystem;

/// Why a path cannot be examined, by `errno`; empty if nothing is there.
std::string PathProblem(int error) {
    switch (error) {
    case ENOENT:
        return {};
    case ELOOP:
        return "is a link that leads round in a circle; name the file itself";
    case ENAMETOOLONG:
        return "has a longer name than files can have; name another";
    case ENOTDIR:
        return "lies in a file instead of a folder; name another";
    case EACCES:
        return "lies in a folder that you have no permission to look into; name another";
    default:
        return std::string("cannot be looked at: ") + std::strerror(error);
    }
}

std::string InputProblem(const std::string& input) {
    if (IsStandardInput(input)) {
        return {};
    }
    struct stat status = {};
    if (stat(input.c_str(), &status) != 0) {
        const std::string problem = PathProblem(errno);
        return problem.empty() ? "no such file; name an existing picture" : problem;
    }
    if (S_ISDIR(status.st_mode)) {
        return "is a folder; name the pictures in it";
    }
    if (access(input.c_str(), R_OK) != 0) {
        return "no permission to read it; name a picture you may read";
    }
    return S_ISREG(status.st_mode) ? ""
                                   : "is no regular file; name a picture file, or - and send it into standard input";
}

std::string FolderProblem(const fs::path& folder) {
    struct stat status = {};
    if (stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        return "there is no folder " + Quoted(folder) + "; name an existing one";
    }
    return access(folder.c_str(), W_OK | X_OK) != 0
               ? "no permission to write into folder " + Quoted(folder) + "; name another"
               : "";
}

std::string FormatProblem(const std::string& output, const std::string& format) {
    try {
        const PictureWriter writer(format.empty() ? output : format);
        return {};
    } catch (const PictureError& error) {
        return error.what();
    }
}

/// For an output in a folder that exists or will be created.
std::string OutputProblem(const std::string& output, const Settings& settings) {
    struct stat status = {};
    if (lstat(output.c_str(), &status) == 0 && !settings.force) {
        return "the output " + Quoted(output) + " exists; name another or allow --force to replace it";
    }
    if (stat(output.c_str(), &status) != 0) {
        const std::string problem = PathProblem(errno);
        return problem.empty() ? FormatProblem(output, settings.format)
                               : "the output " + Quoted(output) + " " + problem;
    }
    if (S_ISDIR(status.st_mode)) {
        return "the output " + Quoted(output) + " is a folder; name a file";
    }
    // Root could replace it all the same; whoever took the permission away did not want that.
    if ((status.st_mode & S_IWUSR) == 0 || access(output.c_str(), W_OK) != 0) {
        return "the output " + Quoted(output) + " is write-protected; make it writable first or name another";
    }
    return FormatProblem(output, settings.format);
}

/// Identifies a file whatever its name and links: an existing one by device and inode, any other by the path at which
/// it would appear.
std::string Identity(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) == 0) {
        return std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
    }
    std::error_code none;
    const fs::path target = BehindLinks(path);
    return (fs::canonical(FolderOf(target), none) / target.filename()).string();
}

bool IsStream(const std::string& output) {
    return IsStandardOutput(output) || IsDevice(output);
}

void RefuseStandardInputTwice(const Settings& settings) {
    if (std::ranges::count_if(settings.inputs, IsStandardInput) > 1) {
        throw UsageError("standard input can be read but once; give - once, or ./- for a file of that name");
    }
}

void RefuseSharedOutputs(const std::vector<Task>& tasks, const std::string& option) {
    std::map<std::string, const Task*> writers;
    for (const Task& task : tasks) {
        const auto [first, isNew] = writers.emplace(Identity(task.output), &task);
        if (!isNew) {
            const Task& other = *first->second;
            if (other.input == task.input) {
                throw UsageError(option + ": " + Quoted(task.input) + " is given twice; name it once");
            }
            throw UsageError(option + ": " + Quoted(other.input) + " and " + Quoted(task.input) +
                             " would both become " + Quoted(task.output) +
                             (other.output == task.output ? "" : ", which is also " + Quoted(other.output)) +
                             "; write them into different folders");
        }
    }
}

/// Missing inputs are compared by their paths.
void ProtectInputs(const std::vector<Task>& tasks, const std::string& option) {
    std::map<std::string, std::string> inputs;
    for (const Task& task : tasks) {
        const std::string path = IsStandardInput(task.input) ? "/dev/stdin" : task.input;
        inputs.emplace(Identity(path), task.input);
    }
    for (const Task& task : tasks) {
        const auto input = inputs.find(Identity(task.output));
        if (!IsStream(task.output) && input != inputs.end()) {
            throw UsageError(option + ": the output " + Quoted(task.output) + " is the input " + Quoted(input->second) +
                             "; name another place, no input is ever replaced");
        }
    }
}

void RefuseBadOutputs(const std::vector<Task>& tasks, const Settings& settings, const std::string& option) {
    std::string first;
    std::size_t count = 0;
    for (const Task& task : tasks) {
        const std::string problem = IsStream(task.output) ? "" : OutputProblem(task.output, settings);
        first = first.empty() ? problem : first;
        count += problem.empty() ? 0 : 1;
    }
    if (count > 0) {
        throw UsageError(option + ": " + first +
                         (count > 1 ? "; likewise for " + std::to_string(count - 1) + " more" : ""));
    }
}

/// Checks the folder, or the one that it would be made in.
void CheckFolder(const fs::path& folder, bool mayBeNew, const std::string& option) {
    std::error_code none;
    const bool isNew = mayBeNew && !fs::exists(folder, none);
    const fs::path there = !isNew ? folder : FolderOf(folder.filename().empty() ? folder.parent_path() : folder);
    if (const std::string problem = FolderProblem(there); !problem.empty()) {
        throw UsageError(option + ": " + (isNew ? "cannot create folder " + Quoted(folder) + ": " : "") + problem);
    }
}

/// Creates the folder, the last of its path, if it is missing; returns it only then.
fs::path MakeFolder(const fs::path& folder) {
    std::error_code error;
    if (folder.empty() || fs::is_directory(folder, error)) {
        return {};
    }
    fs::create_directory(folder, error);
    if (error) {
        throw UsageError("-o: cannot create folder " + Quoted(folder) + ": " + error.message());
    }
    return folder;
}

Plan PlanInto(const OutputNames& outputs, const Settings& settings, const std::string& option) {
    RefuseStandardInputTwice(settings);
    Plan plan;
    for (std::size_t k = 0; k < settings.inputs.size(); ++k) {
        plan.tasks.push_back({settings.inputs[k], outputs.names[k], InputProblem(settings.inputs[k])});
    }
    const bool isFile = outputs.folder.empty();
    if (!isFile || !IsStream(outputs.names.front())) {
        CheckFolder(isFile ? FolderOf(BehindLinks(outputs.names.front())) : outputs.folder, !isFile, option);
    }
    RefuseSharedOutputs(plan.tasks, option);
    ProtectInputs(plan.tasks, option);
    RefuseBadOutputs(plan.tasks, settings, option);
    plan.newFolder = MakeFolder(outputs.folder);
    std::set<fs::path> folders;
    for (const Task& task : plan.tasks) {
        if (!IsStream(task.output) && folders.insert(FolderOf(BehindLinks(task.output))).second) {
            RemoveLeftovers(FolderOf(BehindLinks(task.output)));
        }
    }
    return plan;
}

} // namespace

Plan PlanOutputs(const Settings& settings) {
    return PlanInto(NameOutputs(settings), settings, "-o");
}

Plan PlanOutput(const Settings& settings, const std::string& option) {
    return PlanInto({{settings.output}, {}}, settings, option);
}

Plan PlanReading(const Settings& settings) {
    RefuseStandardInputTwice(settings);
    Plan plan;
    for (const std::string& input : settings.inputs) {
        plan.tasks.push_back({input, {}, InputProblem(input)});
    }
    return plan;
}

} // namespace cli
