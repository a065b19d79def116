#include "Printable.h"

#include <glib.h>

#include <algorithm>
#include <cstdio>

namespace cli {
namespace {

std::string Escaped(std::string_view bytes) {
    std::string text;
    for (const char c : bytes) {
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(c)));
        text += c == '\n' ? "\\n" : c == '\t' ? "\\t" : escape;
    }
    return text;
}

/// The joiners of words and emoji have no shape of their own, but other characters take theirs from them.
bool IsShown(gunichar character) {
    return g_unichar_isprint(character) || character == 0x200c || character == 0x200d;
}

} // namespace

std::string Printable(std::string_view text) {
    std::string shown;
    while (!text.empty()) {
        const gunichar character = g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
        const bool isUtf8 = character < 0x110000; // what is not gives larger values
        const auto length = isUtf8 ? static_cast<std::size_t>(g_unichar_to_utf8(character, nullptr)) : 1;
        const std::string_view bytes = text.substr(0, length);
        shown += isUtf8 && IsShown(character) ? std::string(bytes) : Escaped(bytes);
        text.remove_prefix(length);
    }
    return shown;
}

} // namespace cli
