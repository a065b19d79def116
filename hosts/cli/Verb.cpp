#include "Verb.h"

namespace cli {

std::string SideMisfit(const char* option, int value, int largest) {
    if (value <= largest) {
        return {};
    }
    return std::string(option) + " " + std::to_string(value) + " is too large for this picture; " +
           (largest > 0 ? "give at most " + std::to_string(largest) : "no value fits so small a picture");
}

} // namespace cli
