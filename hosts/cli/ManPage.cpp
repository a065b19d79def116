#include "ManPage.h"

#include "Words.h"

#include <algorithm>
#include <string_view>

namespace cli {
namespace {

/// Escapes what roff would take for its own: backslashes, and hyphens, which it may typeset as dashes.
std::string Roff(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '\\' || c == '-') {
            escaped += '\\';
        }
        escaped += c == '\\' ? 'e' : c;
    }
    return escaped;
}

std::string VerbSection(const Verb& verb) {
    std::string page = ".SS " + Roff(verb.name) + "\n" + Roff(verb.summary) + ".\n";
    for (const OptionRow& row : verb.options) {
        const std::string initial = DefaultOf(row);
        page += ".TP\n.B " + Roff(row.name) + "\n.I " + Roff(ValueName(row)) + "\n" + Roff(RangeAndHelp(row)) +
                (initial.empty() ? "" : Roff(" (default " + initial + ")")) + "\n";
    }
    return page;
}

} // namespace

std::string Usage(const Verb& verb) {
    const auto has = [&](std::string_view name) {
        return std::ranges::any_of(verb.options, [&](const OptionRow& row) { return name == row.name; });
    };
    return std::string(has("IN") ? " IN..." : "") + (has("-o,--output") ? " -o OUT" : "") +
           (verb.options.empty() ? "" : " [OPTIONS]");
}

std::string ValueName(const OptionRow& row) {
    const auto* choice = std::get_if<Choice>(&row.target);
    return choice ? Joined(choice->words, "|", "|") : row.metavar;
}

std::string RangeAndHelp(const OptionRow& row) {
    const auto* number = std::get_if<WholeNumber>(&row.target);
    if (!number) {
        return row.help;
    }
    return std::string(row.help) + "; " + std::to_string(number->low) + " to " + std::to_string(number->high);
}

std::string ExitStatusHelp() {
    return "0 all done; 1 a picture failed, the others were written; 2 the command line is wrong, nothing was done; "
           "130 interrupted";
}

std::string ManPage() {
    std::string page = ".TH CLARIBOX 1 \"\" \"claribox " CLARIBOX_VERSION "\"\n"
                       ".SH NAME\nclaribox \\- blurs, sharpens and restores pictures\n.SH SYNOPSIS\n";
    for (const Verb& verb : Verbs()) {
        page += ".B claribox " + Roff(verb.name) + "\n" + Roff(Usage(verb).substr(1)) + "\n.br\n";
    }
    page += ".SH DESCRIPTION\n"
            "One verb is one operation. EXIF orientation is applied to the pixels; EXIF, ICC profile, XMP and "
            "resolution are kept, alpha is carried through untouched, and greyscale stays greyscale.\n"
            "An output appears under its name only when it is complete.\n"
            ".SH VERBS\n";
    for (const Verb& verb : Verbs()) {
        page += VerbSection(verb);
    }
    return page + ".SH EXIT STATUS\n" + Roff(ExitStatusHelp()) + "\n";
}

} // namespace cli
