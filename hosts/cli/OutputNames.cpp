#include "OutputNames.h"

#include "Descriptors.h"
#include "Errors.h"
#include "PictureReader.h"
#include "PictureWriter.h"

#include <unistd.h>

#include <optional>

namespace cli {
namespace {

namespace fs = std::filesystem;

std::optional<PictureWriter> WriterFor(const std::string& nameOrEnding) {
    try {
        return PictureWriter(nameOrEnding);
    } catch (const PictureError&) {
        return std::nullopt;
    }
}

/// The input's name without its folder, split before the dot of its ending.
struct NameParts {
    std::string name;
    std::string ending; ///< without the dot
};

NameParts PartsOf(const std::string& input, const std::string& format) {
    const fs::path file = IsStandardInput(input) ? fs::path("stdin") : fs::path(input).filename();
    const std::string own = file.extension().string();
    return {file.stem().string(), !format.empty() ? format : own.empty() ? own : own.substr(1)};
}

std::string FileName(const std::string& input, const std::string& format) {
    const NameParts parts = PartsOf(input, format);
    if (parts.ending.empty()) {
        throw UsageError("-o: " + InputName(input) + " has no ending that tells a format; give one by --format");
    }
    return parts.name + "." + parts.ending;
}

std::string Expanded(const std::string& pattern, const std::string& input, const std::string& format) {
    const NameParts parts = PartsOf(input, format);
    std::string text;
    for (std::size_t at = 0; at < pattern.size(); ++at) {
        if (pattern[at] != '{') {
            text += pattern[at];
            continue;
        }
        const std::size_t end = pattern.find('}', at);
        const std::string word = end == std::string::npos ? "" : pattern.substr(at + 1, end - at - 1);
        if (word != "name" && word != "ext") {
            throw UsageError("-o: '" + pattern + "' is a template, and one knows {name} and {ext} only, for the " +
                             "picture's name and ending");
        }
        text += word == "name" ? parts.name : parts.ending;
        at = end;
    }
    return text;
}

bool IsFolder(const fs::path& path) {
    std::error_code none;
    return fs::is_directory(path, none);
}

/// A new folder of such a name is more likely a slip.
void RefuseOddFolder(const fs::path& folder) {
    const fs::path name = folder.filename().empty() ? folder.parent_path().filename() : folder.filename();
    if (IsFolder(folder)) {
        return;
    }
    if (name.string().find('%') != std::string::npos) {
        throw UsageError("-o: no new folder is called " + Quoted(name) +
                         "; a template is written like '{name}-sharp.{ext}'");
    }
    if (WriterFor(name.string())) {
        throw UsageError("-o: no new folder is called " + Quoted(name) +
                         ", like a picture; several pictures need a folder, such as 'out', or a template, such as " +
                         "'{name}-new.{ext}'");
    }
}

OutputNames ByTemplate(const Settings& settings) {
    const fs::path pattern = settings.output;
    if (pattern.parent_path().string().find('{') != std::string::npos) {
        throw UsageError("-o: {name} and {ext} stand in the name of the file, not of its folder, as in "
                         "'out/{name}.{ext}'");
    }
    OutputNames outputs{{}, pattern.parent_path()};
    for (const std::string& input : settings.inputs) {
        outputs.names.push_back(
            (outputs.folder / Expanded(pattern.filename().string(), input, settings.format)).string());
    }
    return outputs;
}

OutputNames IntoFolder(const Settings& settings) {
    OutputNames outputs{{}, settings.output};
    for (const std::string& input : settings.inputs) {
        outputs.names.push_back((outputs.folder / FileName(input, settings.format)).string());
    }
    return outputs;
}

OutputNames ToStandardOutput(const Settings& settings) {
    if (settings.inputs.size() > 1) {
        throw UsageError("-o: standard output takes one picture; name a folder for several");
    }
    if (isatty(ResultDescriptor())) {
        throw UsageError("-o: standard output is a terminal; send it into a file or a pipe");
    }
    return {{settings.output}, {}};
}

void RefuseContradiction(const Settings& settings) {
    const std::optional<PictureWriter> named = WriterFor(settings.output);
    if (!settings.format.empty() && named && !named->SameFormat(PictureWriter(settings.format))) {
        throw UsageError("-o: " + Quoted(settings.output) + " does not end like the --format " + settings.format +
                         "; leave one of them out");
    }
}

} // namespace

OutputNames NameOutputs(const Settings& settings) {
    if (settings.output.empty()) {
        throw UsageError("-o takes the name of a file or folder, not ''");
    }
    if (!settings.format.empty() && !WriterFor(settings.format)) {
        throw UsageError("--format takes " + PictureWriter::FormatNames() + ", not '" + settings.format + "'");
    }
    if (IsStandardOutput(settings.output)) {
        return ToStandardOutput(settings);
    }
    if (settings.output.find('{') != std::string::npos) {
        return ByTemplate(settings);
    }
    const fs::path output = settings.output;
    std::error_code none;
    const bool isFile = fs::exists(output, none) && !IsFolder(output);
    if (settings.inputs.size() > 1 && isFile) {
        throw UsageError("-o: " + Quoted(output) + " is a file; several pictures need a folder");
    }
    if (settings.inputs.size() > 1 || IsFolder(output) || output.filename().empty()) {
        RefuseOddFolder(output);
        return IntoFolder(settings);
    }
    RefuseContradiction(settings);
    return {{settings.output}, {}};
}

bool IsStandardOutput(const std::string& output) {
    return output == "-";
}

std::string OutputName(const std::string& output) {
    return IsStandardOutput(output) ? "standard output" : Quoted(output);
}

std::string Quoted(const fs::path& path) {
    std::string quoted = "'";
    quoted += path.string();
    return quoted += '\'';
}

} // namespace cli
