#include "ManPage.h"

#include "Words.h"

#include <string_view>

namespace cli {
namespace {

/// Escapes what roff would interpret: backslashes, and hyphens, which it may typeset as dashes.
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

std::string OptionParagraphs(std::span<const OptionRow> rows) {
    std::string page;
    for (const OptionRow& row : rows) {
        const std::string initial = DefaultOf(row);
        page += ".TP\n\\fB" + Roff(row.name) + "\\fR \\fI" + Roff(ValueName(row)) + "\\fR\n" + Roff(RangeAndHelp(row)) +
                (initial.empty() ? "" : Roff(" (default " + initial + ")")) + "\n";
    }
    return page;
}

} // namespace

std::string Usage(const Verb& verb) {
    std::string usage;
    for (const OptionRow& row : verb.options) {
        if (row.required) {
            const std::string name = row.name;
            usage += " " + name.substr(0, name.find(',')) + (IsPictures(row) ? "..." : " " + ValueName(row));
        }
    }
    return usage + " [OPTIONS]";
}

std::string ValueName(const OptionRow& row) {
    const auto* choice = std::get_if<Choice>(&row.target);
    return choice ? Joined(choice->words, "|") : row.metavar;
}

std::string RangeAndHelp(const OptionRow& row) {
    const auto* number = std::get_if<WholeNumber>(&row.target);
    if (!number) {
        return row.help;
    }
    return std::string(row.help) + "; " + std::to_string(number->low) + " to " + std::to_string(number->high);
}

std::string ExitStatusHelp() {
    return "0 all done; 1 a picture failed, the others were written; 2 the command line is wrong or an output cannot "
           "be written, nothing was done; 130 interrupted";
}

std::string ManPage() {
    std::string page = ".TH CLARIBOX 1 \"\" \"claribox " CLARIBOX_VERSION "\"\n"
                       ".SH NAME\nclaribox \\- blurs, sharpens and restores pictures\n.SH SYNOPSIS\n";
    for (const Verb& verb : Verbs()) {
        page += ".B claribox " + Roff(verb.name) + "\n" + Roff(Usage(verb).substr(1)) + "\n.br\n";
    }
    page += ".B claribox help\n[VERB]\n"
            ".SH DESCRIPTION\n"
            "One verb is one operation. EXIF orientation is applied to the pixels; EXIF, IPTC, XMP, ICC profile, "
            "comments and resolution are kept where the output's format can, alpha is carried through untouched, and "
            "greyscale stays greyscale.\n"
            "An output appears under its name only when it is complete.\n"
            "Words after \\-\\- are names of pictures, whatever they begin with.\n"
            ".SH VERBS\n";
    for (const Verb& verb : Verbs()) {
        page += ".SS " + Roff(verb.name) + "\n" + Roff(verb.summary) + ".\n" + OptionParagraphs(verb.options);
    }
    return page + ".SH OPTIONS WITHOUT A VERB\n" + OptionParagraphs(GeneralOptions()) + ".SH EXIT STATUS\n" +
           Roff(ExitStatusHelp()) + "\n";
}

} // namespace cli
