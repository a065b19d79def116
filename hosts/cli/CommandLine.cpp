#include "CommandLine.h"

#include "Errors.h"
#include "ManPage.h"
#include "ParseNumber.h"

#include <CLI/CLI.hpp>

#include <iostream>

namespace cli {
namespace {

/// Parses all of `text` or throws with the range.
int RequireWholeNumber(const std::string& option, const std::string& text, const WholeNumber& target) {
    const std::optional<int> value = ParseWholeNumber(text, target.low, target.high);
    if (!value) {
        throw UsageError(option + " takes a whole number from " + std::to_string(target.low) + " to " +
                         std::to_string(target.high) + ", not '" + text + "'");
    }
    return *value;
}

/// Adds the option of one row to `app`, storing into `settings`.
void AddOption(CLI::App& app, const OptionRow& row, Settings& settings) {
    CLI::Option* option = nullptr;
    if (const auto* number = std::get_if<WholeNumber>(&row.target)) {
        const auto store = [&row, number, &settings](const std::string& text) {
            settings.*number->field = RequireWholeNumber(row.name, text, *number);
        };
        option = app.add_option_function<std::string>(row.name, store, RangeAndHelp(row));
        option->default_str(std::to_string(settings.*number->field));
    } else if (const auto* parsed = std::get_if<ParsedText>(&row.target)) {
        const auto store = [&row, parsed, &settings](const std::string& text) {
            parsed->parse(settings, row.name, text);
        };
        option = app.add_option_function<std::string>(row.name, store, row.help);
        option->default_str(parsed->initial);
    } else if (const auto* flag = std::get_if<bool Settings::*>(&row.target)) {
        option = app.add_flag(row.name, settings.*(*flag), row.help);
    } else if (const auto* text = std::get_if<std::string Settings::*>(&row.target)) {
        option = app.add_option(row.name, settings.*(*text), row.help);
    } else {
        option =
            app.add_option(row.name, settings.*std::get<std::vector<std::string> Settings::*>(row.target), row.help);
    }
    option->type_name(row.metavar)->required(row.required);
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
