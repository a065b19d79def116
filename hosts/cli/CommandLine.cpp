#include "CommandLine.h"

#include "Completion.h"
#include "Errors.h"
#include "ManPage.h"
#include "ParseNumber.h"
#include "StandardOutput.h"
#include "Words.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <utility>

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
    if (std::holds_alternative<AskForHelp>(row.target)) {
        option = app.set_help_flag(row.name, row.help);
    } else if (const auto* flag = std::get_if<bool Settings::*>(&row.target)) {
        option = app.add_flag(row.name, settings.*(*flag), row.help);
    } else if (const auto* list = std::get_if<std::vector<std::string> Settings::*>(&row.target)) {
        // CLI11 would split a name in brackets at its commas: it takes the first name, and the others stay in `app`.
        option = app.add_option(row.name, settings.*(*list), row.help)->allow_extra_args(false);
    } else {
        const auto store = [&row, &settings](const std::string& text) {
            std::visit(Store{row, settings, text}, row.target);
        };
        option = app.add_option_function<std::string>(row.name, store, RangeAndHelp(row))->default_str(DefaultOf(row));
    }
    option->type_name(ValueName(row))->required(row.required);
}

/// For a missing or repeated value CLI11 only reports counts, and some other errors it describes in several lines, the
/// first of which names the option.
std::string Described(const CLI::ParseError& error, std::span<const OptionRow> rows, const CLI::App& app) {
    const std::string text = error.what();
    for (const OptionRow& row : rows) {
        const std::string name = LongName(row);
        if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) && text.starts_with(name + ":")) {
            return name + (app.count(name) > 1 ? " is given more than once" : " takes a value: " + ValueName(row));
        }
    }
    return text.substr(0, text.find('\n'));
}

/// Parses the words; those that are unknown stay in `app`. Prints the help and returns false where they ask for it.
bool Parse(CLI::App& app, std::vector<std::string> words) {
    app.footer("Exit status: " + ExitStatusHelp());
    std::ranges::reverse(words); // as CLI11 wants them
    try {
        app.parse(std::move(words));
    } catch (const CLI::CallForHelp&) {
        PrintOut(app.help());
        return false;
    }
    return true;
}

/// What a command line without a verb asks for.
std::string Answer(const Settings& settings, const std::string& firstWord) {
    if (settings.version) {
        return "claribox " CLARIBOX_VERSION "\n";
    }
    if (settings.manPage) {
        return ManPage();
    }
    if (settings.completion >= 0) {
        return Completion(settings.completion);
    }
    throw UsageError("no verb given before '" + firstWord + "'; use one of " + VerbNames() + ", or --help");
}

void AnswerQuestion(const std::vector<std::string>& words) {
    Settings settings;
    CLI::App app("Blurs, sharpens and restores pictures.", "claribox");
    app.get_formatter()->label("SUBCOMMAND", "VERB");
    app.allow_extras();
    for (const OptionRow& row : GeneralOptions()) {
        AddOption(app, row, settings);
    }
    for (const Verb& verb : Verbs()) {
        app.add_subcommand(verb.name, verb.summary)->group("Verbs"); // for the help alone
    }
    app.add_subcommand("help", "print the help of the verb that follows")->group("Verbs");
    try {
        if (Parse(app, words)) {
            PrintOut(Answer(settings, words.front()));
        }
    } catch (const CLI::ParseError& error) {
        throw UsageError(Described(error, GeneralOptions(), app) + "; see claribox --help");
    }
}

std::optional<Request> ParseVerb(const Verb& verb, std::vector<std::string> words) {
    // CLI11 knows "--" too, but forgets it where a picture came before.
    const auto mark = std::ranges::find(words, "--");
    const std::vector<std::string> afterMark(mark == words.end() ? mark : mark + 1, words.end());
    words.erase(mark, words.end());

    Request request{&verb, {}};
    const std::string command = "claribox " + std::string(verb.name);
    const std::string prefix = std::string(verb.name) + ": ";
    CLI::App app(verb.summary, command);
    app.allow_extras(); // to be named below
    for (const OptionRow& row : verb.options) {
        AddOption(app, row, request.settings);
    }
    CLI::Option* const pictures = app.get_option_no_throw("IN");
    if (pictures && !afterMark.empty()) {
        pictures->required(false);
    }
    const auto take = [&](const std::vector<std::string>& names, bool mayBeOptions) {
        for (const std::string& name : names) {
            if (!pictures || (mayBeOptions && name.starts_with('-') && name != "-")) {
                throw UsageError(prefix + "unknown option or argument '" + name + "'; see " + command + " --help");
            }
            request.settings.inputs.push_back(name);
        }
    };
    try {
        if (!Parse(app, std::move(words))) {
            return std::nullopt;
        }
    } catch (const UsageError& error) {
        throw UsageError(prefix + error.what());
    } catch (const CLI::RequiredError& error) {
        take(app.remaining(), true); // naming an unknown option helps more
        throw UsageError(prefix + error.what() + "; usage: " + command + Usage(verb));
    } catch (const CLI::ParseError& error) {
        throw UsageError(prefix + Described(error, verb.options, app) + "; see " + command + " --help");
    }
    take(std::exchange(request.settings.inputs, {}), true);
    take(app.remaining(), true);
    take(afterMark, false);
    if (request.settings.quiet && request.settings.verbose) {
        throw UsageError(prefix + "--quiet and --verbose contradict each other; give one of them");
    }
    return request;
}

} // namespace

std::optional<Request> ParseCommandLine(int argc, const char* const* argv) {
    std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    if (words.empty()) {
        throw UsageError("no verb given; use one of " + VerbNames() + ", or --help");
    }
    if (words.front() == "help") {
        words = {words.size() > 1 ? words[1] : "--help", "--help"};
    }
    const std::string first = words.front();
    if (first.starts_with('-')) {
        AnswerQuestion(words);
        return std::nullopt;
    }
    const Verb* const verb = FindVerb(first);
    if (!verb) {
        throw UsageError("unknown verb '" + first + "'; use one of " + VerbNames());
    }
    words.erase(words.begin());
    return ParseVerb(*verb, std::move(words));
}

} // namespace cli
