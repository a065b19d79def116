#include "Completion.h"

#include "ManPage.h"
#include "Verbs.h"
#include "Words.h"

#include <initializer_list>
#include <sstream>
#include <string_view>
#include <utility>

namespace cli {
namespace {

using Rows = std::span<const OptionRow>;

/// "-o" and "--output" of "-o,--output"; none of the pictures.
std::vector<std::string> NamesOf(const OptionRow& row) {
    std::vector<std::string> names;
    std::istringstream text(IsPictures(row) ? "" : row.name);
    for (std::string name; std::getline(text, name, ',');) {
        names.push_back(name);
    }
    return names;
}

bool IsFile(const OptionRow& row) {
    return std::holds_alternative<FileName>(row.target);
}

/// What the option takes among words, with blanks between.
std::string WordsOf(const OptionRow& row) {
    const auto* choice = std::get_if<Choice>(&row.target);
    const auto* parsed = std::get_if<ParsedText>(&row.target);
    return choice ? Joined(choice->words, " ") : parsed ? Joined(parsed->words, " ") : "";
}

/// `text` with `escape` before each of the characters `special`.
std::string Escaped(std::string_view text, std::string_view special, std::string_view escape = "\\") {
    std::string escaped;
    for (const char c : text) {
        escaped += special.find(c) == std::string_view::npos ? "" : escape;
        escaped += c;
    }
    return escaped;
}

/// `frame` with each mark replaced by its text.
std::string Filled(std::string frame, std::initializer_list<std::pair<std::string_view, std::string>> texts) {
    for (const auto& [mark, text] : texts) {
        frame.replace(frame.find(mark), mark.size(), text);
    }
    return frame;
}

// bash: one case for the value of each option, and one for each verb's options and pictures

constexpr const char* kBashFrame = R"(# bash completion for claribox, printed by: claribox --completion bash
_claribox() {
    local verb=${COMP_WORDS[1]} current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    local words= files= verbs='@VERBS@'
    if [[ $current == "=" ]]; then # bash takes --rule=soft for three words
        current=
    elif [[ $before == "=" ]]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    if ((COMP_CWORD == 1)); then
        verb= words="$verbs help@GENERAL@"
    elif [[ " ${COMP_WORDS[*]:2:COMP_CWORD-2} " == *" -- "* ]]; then
        verb= files=1
    fi
    case $verb:$before in
    :*) ;;
    help:help) words=$verbs ;;
@VALUES@    *)
        case $verb:$current in
@OTHERS@        esac
        ;;
    esac
    COMPREPLY=($(compgen -W "$words" -- "$current"))
    if [[ $files ]]; then
        compopt -o default # readline knows best how names are quoted
    fi
}
complete -F _claribox claribox
)";

std::string BashValues(const std::string& verb, Rows rows) {
    std::string cases;
    for (const OptionRow& row : rows) {
        for (const std::string& name : NamesOf(row)) {
            const std::string value = IsFile(row) ? "files=1" : "words='" + WordsOf(row) + "'";
            cases += IsFlag(row) ? "" : "    " + (verb.empty() ? name : verb) + ":" + name + ") " + value + " ;;\n";
        }
    }
    return cases;
}

std::string BashNames(Rows rows) {
    std::string all;
    for (const OptionRow& row : rows) {
        all += " " + Joined(NamesOf(row), " ");
    }
    return all;
}

std::string BashScript() {
    std::string values = BashValues("", GeneralOptions());
    std::string others;
    for (const Verb& verb : Verbs()) {
        const std::string name = verb.name;
        values += BashValues(name, verb.options);
        others += "        " + name + ":-*) words='" + BashNames(verb.options) + "' ;;\n";
        others += TakesPictures(verb) ? "        " + name + ":*) files=1 ;;\n" : "";
    }
    return Filled(kBashFrame, {{"@VERBS@", VerbNames(" ")},
                               {"@GENERAL@", BashNames(GeneralOptions())},
                               {"@VALUES@", values},
                               {"@OTHERS@", others}});
}

// zsh: the words of _arguments for each verb

constexpr const char* kZshFrame = R"(#compdef claribox
# printed by: claribox --completion zsh
_claribox() {
    local -a verbs=(@VERBS@
    )
    local -a help=('help:print the help of a verb')
    if [[ $words[2] == -* ]]; then
        @GENERAL@
        return
    fi
    if (( CURRENT == 2 )); then
        _describe verb verbs -- help
        return
    fi
    shift words
    (( CURRENT-- ))
    case $words[1] in
    help)
        _describe verb verbs
        ;;
@CASES@    esac
}
if [[ $funcstack[1] == _claribox ]]; then # loaded by its first use
    _claribox "$@"
else
    compdef _claribox claribox
fi
)";

std::string ZshArguments(Rows rows) {
    std::string words = "_arguments -s -S";
    for (const OptionRow& row : rows) {
        const std::string help = "[" + Escaped(RangeAndHelp(row), "\\[]:") + "]";
        const std::string action = IsFile(row) ? "_files" : WordsOf(row).empty() ? " " : "(" + WordsOf(row) + ")";
        const std::string value = IsFlag(row) ? "" : ":" + ValueName(row) + ":" + action;
        const std::string other = "(" + Joined(NamesOf(row), " ") + ")";
        for (const std::string& name : NamesOf(row)) {
            const char* const joint = IsFlag(row) ? "" : name.starts_with("--") ? "=" : "+";
            words += " \\\n            '" + Escaped(other + name + joint + help + value, "'", "'\\'") + "'";
        }
        words += IsPictures(row) ? " \\\n            '*:picture:_files'" : "";
    }
    return words;
}

std::string ZshScript() {
    std::string verbs;
    std::string cases;
    for (const Verb& verb : Verbs()) {
        verbs += "\n        '" + Escaped(verb.name + (":" + Escaped(verb.summary, "\\:")), "'", "'\\'") + "'";
        cases += "    " + std::string(verb.name) + ")\n        " + ZshArguments(verb.options) + "\n        ;;\n";
    }
    return Filled(kZshFrame, {{"@VERBS@", verbs}, {"@GENERAL@", ZshArguments(GeneralOptions())}, {"@CASES@", cases}});
}

// fish: a line for each option

std::string FishLines(const std::string& condition, Rows rows) {
    std::string lines;
    for (const OptionRow& row : rows) {
        if (IsPictures(row)) {
            continue;
        }
        lines += "complete -c claribox -n '" + condition + "'";
        for (const std::string& name : NamesOf(row)) {
            lines += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
        }
        lines += IsFlag(row) ? "" : IsFile(row) ? " -r -F" : " -x";
        lines += WordsOf(row).empty() ? "" : " -a '" + WordsOf(row) + "'";
        lines += " -d '" + Escaped(RangeAndHelp(row), "\\'") + "'\n";
    }
    return lines;
}

std::string FishScript() {
    const std::string start = "__fish_use_subcommand";
    const auto verbLine = [](const std::string& condition, const std::string& words, const std::string& help) {
        return "complete -c claribox -n '" + condition + "' -f -a '" + words + "' -d '" + Escaped(help, "\\'") + "'\n";
    };
    std::string script = "# fish completion for claribox, printed by: claribox --completion fish\n" +
                         FishLines(start, GeneralOptions()) + verbLine(start, "help", "print the help of a verb");
    for (const Verb& verb : Verbs()) {
        const std::string within = "__fish_seen_subcommand_from " + std::string(verb.name);
        script += verbLine(start, verb.name, verb.summary) +
                  verbLine("__fish_seen_subcommand_from help", verb.name, verb.summary);
        script += (TakesPictures(verb) ? "" : "complete -c claribox -n '" + within + "' -f\n") +
                  FishLines(within, verb.options);
    }
    return script;
}

const struct {
    const char* shell;
    std::string (*script)();
} kScripts[] = {{"bash", BashScript}, {"zsh", ZshScript}, {"fish", FishScript}};

} // namespace

std::vector<std::string> CompletionShells() {
    std::vector<std::string> shells;
    for (const auto& row : kScripts) {
        shells.emplace_back(row.shell);
    }
    return shells;
}

std::string Completion(int shell) {
    return kScripts[shell].script();
}

} // namespace cli
