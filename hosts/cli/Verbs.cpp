#include "Verbs.h"

#include "Completion.h"
#include "verbs/EveryVerb.h"

#include <algorithm>

namespace cli {

std::span<const Verb> Verbs() {
    static const std::vector<Verb> table = {
        BlurVerb(),    MotionBlurVerb(), DeBlurVerb(),   DeMotionBlurVerb(), GuessMotionVerb(),
        DenoiseVerb(), BandVerb(),       SpectrumVerb(), InfoVerb(),
    };
    return table;
}

std::span<const OptionRow> GeneralOptions() {
    static const std::vector<OptionRow> rows = {
        {"-V,--version", "", "print the version", &Settings::version},
        {"--man", "", "print the manual page, for man -l", &Settings::manPage},
        {"--completion", "", "print what completes the command's words in this shell",
         Choice{&Settings::completion, CompletionShells()}},
        Help(),
    };
    return rows;
}

const Verb* FindVerb(const std::string& name) {
    const auto found = std::ranges::find_if(Verbs(), [&](const Verb& verb) { return name == verb.name; });
    return found == Verbs().end() ? nullptr : &*found;
}

std::string VerbNames(const char* between) {
    std::string names;
    for (const Verb& verb : Verbs()) {
        names += (names.empty() ? "" : between) + std::string(verb.name);
    }
    return names;
}

bool TakesPictures(const Verb& verb) {
    return std::ranges::any_of(verb.options, IsPictures);
}

} // namespace cli
