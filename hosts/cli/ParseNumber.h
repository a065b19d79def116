// Whole numbers on the command line.
#pragma once

#include <charconv>
#include <optional>
#include <string>

namespace cli {

/// All of `text` as a number from `low` to `high`; none if it is anything else.
inline std::optional<int> ParseWholeNumber(const std::string& text, int low, int high) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool whole = error == std::errc{} && end == text.data() + text.size();
    return whole && value >= low && value <= high ? std::optional(value) : std::nullopt;
}

} // namespace cli
