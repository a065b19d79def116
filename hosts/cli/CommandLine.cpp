#include "CommandLine.h"

#include "Errors.h"
#include "ManPage.h"
#include "ParseNumber.h"
#include "Words.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>

namespace cli {
namespace {

[[noreturn]] void RefuseValue(const OptionRow& row, const std::string& right, const std::string& text) {
    throw UsageError(LongName(row) + " takes " + right + ", not '" + text + "'");
}

/// Reads the text of one option into the settings.
struct Store {
    const OptionRow& row;
    Settings& settings;
    const std::string& text;

    void operator()(const WholeNumber& number) const {
        const std::optional<int> value = ParseWholeNumber(text, number.low, number.high);
        if (!value) {
            RefuseValue(row, "a whole number from " + std::to_string(number.low) + " to " + std::to_string(number.high),
                        text);
        }
        settings.*number.field = *value;
    }
    void operator()(const Choice& choice) const {
        const auto found = std::ranges::find(choice.words, text);
        if (found == choice.words.end()) {
            RefuseValue(row, Joined(choice.words, ", ", " or "), text);
        }
        settings.*choice.field = static_cast<int>(found - choice.words.begin());
    }
    void operator()(const FileName& file) const {
        if (!text.ends_with(file.ending)) {
            RefuseValue(row, "the name of a file ending in " + std::string(file.ending), text);
        }
        settings.*file.field = text;
    }
    void operator()(const ParsedText& parsed) const { parsed.parse(settings, LongName(row), text); }
    void operator()(const auto&) const {} // flags and lists are stored by the parser itself
};

/// Adds the option of one row to `app`, storing into `settings`.
void AddOption(CLI::App& app, const OptionRow& row, Settings& settings) {
    CLI::Option* option = nullptr;
    if (const auto* flag = std::get_if<bool Settings::*>(&row.target)) {
        option = app.add_flag(row.name, settings.*(*flag), row.help);
    } else if (const auto* list = std::get_if<std::vector<std::string> Settings::*>(&row.target)) {
        option = app.add_option(row.name, settings.*(*list), row.help);
    } else {
        const auto store = [&row, &settings](const std::string& text) {
            std::visit(Store{row, settings, text}, row.target);
        };
        option = app.add_option_function<std::string>(row.name, store, RangeAndHelp(row))->default_str(DefaultOf(row));
    }
    option->type_name(ValueName(row))->required(row.required);
}

/// CLI11 describes some faults over several lines; the first names the option.
std::string FirstLine(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

} // namespace

std::optional<Request> ParseCommandLine(int argc, const char* const* argv) {
    if (argc < 2) {
        throw UsageError("no verb given; use one of " + VerbNames() + ", or --help");
    }
    const std::string first = argv[1];
    const Verb* const verb = FindVerb(first);
    if (!first.starts_with('-') && !verb) {
        throw UsageError("unknown verb '" + first + "'; use one of " + VerbNames());
    }

    Request request{};
    CLI::App app("Blurs, sharpens and restores pictures.", "claribox");
    app.set_version_flag("--version", std::string("claribox ") + CLARIBOX_VERSION);
    bool manPage = false;
    app.add_flag("--man", manPage, "print the manual page, for man -l");
    app.footer(std::string("Exit status: ") + ExitStatusHelp());
    app.allow_extras(); // and its verbs after it: unknown words are named below
    for (const Verb& each : Verbs()) {
        CLI::App* sub = app.add_subcommand(each.name, each.summary);
        for (const OptionRow& row : each.options) {
            AddOption(*sub, row, request.settings);
        }
        sub->callback([&request, &each] { request.verb = &each; });
    }
    const std::string prefix = verb ? first + ": " : "";
    const std::string command = "claribox " + (verb ? first : "VERB");
    try {
        app.parse(argc, argv);
    } catch (const UsageError& error) {
        throw UsageError(prefix + error.what());
    } catch (const CLI::RequiredError& error) {
        throw UsageError(prefix + error.what() + "; usage: " + command + Usage(verb ? *verb : Verbs().front()));
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) {
            app.exit(error, std::cout, std::cerr);
            return std::nullopt;
        }
        throw UsageError(prefix + FirstLine(error.what()) + "; see " + command + " --help");
    }
    if (manPage) {
        std::cout << ManPage();
        return std::nullopt;
    }
    if (!request.verb) {
        throw UsageError("no verb given; use one of " + VerbNames() + ", or --help");
    }
    const std::vector<std::string> extras = app.get_subcommand(request.verb->name)->remaining();
    if (!extras.empty()) {
        throw UsageError(prefix + "unknown option or argument '" + extras.front() + "'; see " + command + " --help");
    }
    return request;
}

} // namespace cli
