// All that the options of any verb, or a command line without one, can set, with the defaults.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace cli {

struct Settings {
    std::vector<std::string> inputs;
    std::string output;
    std::string format;             ///< of the outputs by its ending; empty: as their names or the inputs say
    int radius = 3;                 ///< pixels
    int length = 15;                ///< pixels
    int degree = 30;                ///< counter-clockwise from the right
    bool guessDegree = false;       ///< the degree is guessed on each picture instead
    std::optional<float> threshold; ///< in grey levels; none: measured on the picture
    int rule = 0;                   ///< of shrinkage: 0 soft, 1 hard, 2 garrote
    int band = 0;                   ///< of frequencies: 0 finest detail, 1 middle, 2 coarse rest
    int quality = 92;
    int jobs = 0;         ///< 0: one for each processor
    bool centred = false; ///< the zero frequency in the middle
    bool exact = false;   ///< the library's own bytes
    bool force = false;
    bool strict = false;
    bool json = false;
    bool verbose = false;
    bool quiet = false;
    bool version = false;
    bool manPage = false;
    int completion = -1; ///< place of the shell asked for in the list of those known
};

} // namespace cli
