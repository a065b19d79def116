// Lists of words as text.
#pragma once

#include <span>
#include <string>

namespace cli {

/// "a, b or c" with ", " between them and " or " before the last.
inline std::string Joined(std::span<const std::string> words, const std::string& between, const std::string& last) {
    std::string text;
    for (std::size_t k = 0; k < words.size(); ++k) {
        text += (k == 0 ? "" : k + 1 == words.size() ? last : between) + words[k];
    }
    return text;
}

inline std::string Joined(std::span<const std::string> words, const std::string& between) {
    return Joined(words, between, between);
}

} // namespace cli
