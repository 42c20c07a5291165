#pragma once

#include "support/point_set.h"

#include <map>
#include <string>
#include <vector>

namespace reference {

/// Points with the known result of their fit.
struct Case {
    std::string file, id;
    PointSet data;
    Solution truth;
    Gain noise_gain;
    /// How well the result is known: to all digits, for exactly these doubles or for decimals that the doubles round;
    /// to all digits, of a certified reference pair; or as a measuring machine's software printed it.
    enum Kind { exact, decimal, certified, machine } kind = exact;
};

struct Cases {
    std::vector<Case> known;             // in the order of the files' names
    std::map<std::string, int> skipped;  // how many cases are left out for each reason
};

/// The cases of all JSON files of a folder. A file that isn't of the format throws.
Cases read_cases(std::string const & folder);

}  // namespace reference
