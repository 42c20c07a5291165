#pragma once

#include "support/reference_case.h"
#include "support/reference_fit.h"

#include <gtest/gtest.h>

#include <iostream>
#include <map>
#include <string>

namespace reference {

/// Expects differences to keep within their bounds, and prints at its end how many fits of each kind were compared and
/// how near the worst of them came to its bound.
class Tally {
public:
    Tally() = default;
    Tally(Tally const &) = delete;
    Tally & operator=(Tally const &) = delete;
    ~Tally() {
        for (auto const & [kind, line] : lines_) {
            std::cout << "[ compared ] " << line.count << " of " << kind << ", the worst " << line.worst
                      << " of its bound: " << line.where << "\n";
        }
    }

    void compare(Case const & known, Differences const & differences, Differences const & bounds) {
        long double const ratio = worst_ratio(differences, bounds);
        EXPECT_LE(ratio, 1.0L) << "differences: " << text(differences) << "\nbounds: " << text(bounds);
        Line & line = lines_[(known.data.is_probed() ? "probed " : "") + std::string(name(known.data.primitive))];
        ++line.count;
        if (!(ratio <= line.worst)) {
            line.worst = ratio;
            line.where = known.file + " " + known.id;
        }
    }

    int compared(std::string const & kind) { return lines_[kind].count; }

private:
    struct Line {
        int count = 0;
        long double worst = 0;
        std::string where;
    };
    std::map<std::string, Line> lines_;
};

}  // namespace reference
