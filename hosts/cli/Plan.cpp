#include "Plan.h"

#include "Errors.h"
#include "OutputFile.h"
#include "PictureReader.h"
#include "PictureWriter.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>

namespace cli {
namespace {

namespace fs = std::filesystem;

std::string Quoted(const fs::path& path) {
    std::string quoted = "'";
    quoted += path.string();
    return quoted += '\'';
}

bool IsFolder(const fs::path& path) {
    std::error_code none;
    return fs::is_directory(path, none);
}

void RequireWritableFolder(const fs::path& folder, const std::string& option) {
    const fs::path named = folder.empty() ? "." : folder;
    if (!IsFolder(named)) {
        throw UsageError(option + ": there is no folder " + Quoted(named) + "; name an existing one");
    }
    if (access(named.c_str(), W_OK | X_OK) != 0) {
        throw UsageError(option + ": no permission to write into folder " + Quoted(named) + "; name another");
    }
}

/// Several pictures go into a folder, which may be new.
void PrepareFolder(const fs::path& folder, const std::string& option) {
    std::error_code error;
    if (fs::exists(folder) && !IsFolder(folder)) {
        throw UsageError(option + ": " + Quoted(folder) + " is a file; several pictures need a folder");
    }
    fs::create_directory(folder, error);
    if (error) {
        throw UsageError(option + ": cannot create folder " + Quoted(folder) + ": " + error.message());
    }
    RequireWritableFolder(folder, option);
}

std::string InputProblem(const fs::path& input) {
    if (IsStandardInput(input)) {
        return {};
    }
    std::error_code error;
    const fs::file_status status = fs::status(input, error);
    if (status.type() == fs::file_type::not_found) {
        return "no such file; name an existing picture";
    }
    if (fs::is_directory(status)) {
        return "is a folder; name the pictures in it";
    }
    if (access(input.c_str(), R_OK) != 0) {
        return "no permission to read it; name a picture you may read";
    }
    if (!fs::is_regular_file(status)) {
        return "is no regular file; name a picture file";
    }
    return {};
}

std::string OutputProblem(const fs::path& output, bool force) {
    if (IsDevice(output)) {
        return {};
    }
    if (IsFolder(output)) {
        return "its output " + Quoted(output) + " is a folder; name a file";
    }
    if (!force && fs::exists(fs::symlink_status(output))) {
        return "its output " + Quoted(output) + " exists; name another or allow --force to replace it";
    }
    try {
        const PictureWriter writer(output.string());
    } catch (const PictureError& error) {
        return error.what();
    }
    return {};
}

bool IsSameFile(const fs::path& one, const fs::path& other) {
    std::error_code none;
    return fs::equivalent(one, other, none); // device and inode, links followed
}

void RefuseStandardInputTwice(const Settings& settings) {
    if (std::ranges::count_if(settings.inputs, IsStandardInput) > 1) {
        throw UsageError("standard input can be read but once; give - once, or ./- for a file of that name");
    }
}

/// Inputs that are missing have no file to protect, and no file of their own to be found again.
void ProtectInputs(const std::vector<Task>& tasks, const std::string& option) {
    for (const Task& writing : tasks) {
        std::error_code none;
        if (!fs::exists(writing.output, none) || IsDevice(writing.output)) {
            continue;
        }
        for (const Task& reading : tasks) {
            const fs::path input = IsStandardInput(reading.input) ? "/dev/stdin" : reading.input;
            if (IsSameFile(writing.output, input)) {
                throw UsageError(option + ": the output " + Quoted(writing.output) + " is the input " +
                                 Quoted(reading.input) + "; name another place, no input is ever replaced");
            }
        }
    }
}

void RefuseSharedOutputs(const std::vector<Task>& tasks, const std::string& option) {
    std::map<std::string, std::string> inputOf;
    for (const Task& task : tasks) {
        const auto [first, isNew] = inputOf.emplace(task.output, task.input);
        if (!isNew) {
            throw UsageError(option + ": " + Quoted(first->second) + " and " + Quoted(task.input) +
                             " would both become " + Quoted(task.output) + "; write them into different folders");
        }
    }
}

} // namespace

std::vector<Task> PlanTasks(const Settings& settings, const std::string& option) {
    const fs::path output = settings.output;
    const bool batch = settings.inputs.size() > 1;
    if (!batch && (IsFolder(output) || output.filename().empty())) {
        throw UsageError(option + ": '" + settings.output + "' is a folder; for one picture name a file, such as " +
                         Quoted(output / fs::path(settings.inputs.front()).filename()));
    }
    std::vector<Task> tasks;
    for (const std::string& input : settings.inputs) {
        tasks.push_back({input, batch ? (output / fs::path(input).filename()).string() : settings.output, {}});
    }
    RefuseStandardInputTwice(settings);
    RefuseSharedOutputs(tasks, option);
    ProtectInputs(tasks, option);
    if (batch) {
        PrepareFolder(output, option);
    } else if (!IsDevice(output)) {
        RequireWritableFolder(output.parent_path(), option);
    }
    for (Task& task : tasks) {
        task.problem = InputProblem(task.input);
        if (task.problem.empty()) {
            task.problem = OutputProblem(task.output, settings.force);
        }
    }
    return tasks;
}

std::vector<Task> PlanReading(const Settings& settings) {
    RefuseStandardInputTwice(settings);
    std::vector<Task> tasks;
    for (const std::string& input : settings.inputs) {
        tasks.push_back({input, {}, InputProblem(input)});
    }
    return tasks;
}

} // namespace cli
