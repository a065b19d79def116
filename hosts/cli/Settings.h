// All that the options of any verb can set, with the defaults.
#pragma once

#include <string>
#include <vector>

namespace cli {

struct Settings {
    std::vector<std::string> inputs;
    std::string output;
    int radius = 3;  ///< pixels
    int length = 15; ///< pixels
    int degree = 30; ///< counter-clockwise from the right
    int quality = 92;
    int jobs = 0; ///< 0: one for each processor
    bool force = false;
    bool strict = false;
    bool json = false;
};

} // namespace cli
