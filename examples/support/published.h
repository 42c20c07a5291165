#pragma once

#include "fits.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

// More decimals than this of a coordinate in millimetres are beyond doubles.
inline constexpr int most_decimals = 12;

/// A value that a data file quotes from its source: a comment "published: centre x = 4.7398".
struct Published {
    std::string name, printed;
    double value;
    int decimals;
};

/// The text behind "key:" of each comment that has it.
inline std::vector<std::string> comments_with(PointsFile const & file, std::string const & key) {
    std::vector<std::string> found;
    for (std::string const & comment : file.comments) {
        if (comment.compare(0, key.size() + 1, key + ":") == 0) {
            found.emplace_back(trimmed(std::string_view(comment).substr(key.size() + 1)));
        }
    }
    return found;
}

/// The values that a data file quotes; none at all if one of them can't be read.
inline std::vector<Published> published_values(PointsFile const & file) {
    std::vector<Published> values;
    for (std::string const & text : comments_with(file, "published")) {
        auto const equals = text.find('=');
        if (equals == text.npos) {
            return {};
        }
        std::string const printed(trimmed(std::string_view(text).substr(equals + 1)));
        Published value{std::string(trimmed(std::string_view(text).substr(0, equals))), printed, 0.0, 0};
        if (!parse_number(printed, value.value).empty()) {
            return {};
        }
        auto const point = printed.find('.');
        int const printed_decimals = point == printed.npos ? 0 : static_cast<int>(printed.size() - point) - 1;
        // A whole number, as the 0 and 1 of an axis, is exact.
        value.decimals = printed_decimals == 0 ? most_decimals : std::min(printed_decimals, most_decimals);
        values.push_back(value);
    }
    return values;
}

/// Turns a direction or normal to the sense of the published one: that of an axis is a matter of taste.
inline void match_sense(std::string const & axis, std::vector<Published> const & published, Fit & fit) {
    double product = 0.0;
    for (Quantity const & q : fit.quantities) {
        for (Published const & p : published) {
            product += q.name == p.name && q.name.compare(0, axis.size(), axis) == 0 ? q.value * p.value : 0.0;
        }
    }
    for (Quantity & q : fit.quantities) {
        q.value = product < 0.0 && q.name.compare(0, axis.size(), axis) == 0 ? -q.value : q.value;
    }
}

/// Prints a row for each published value, with the computed one beside it. Returns how many agree in all decimals.
inline int compare(std::vector<Published> const & published, Fit & fit) {
    match_sense("direction", published, fit);
    match_sense("normal", published, fit);
    int n_agreeing = 0;
    for (Published const & p : published) {
        auto const computed = std::find_if(fit.quantities.begin(), fit.quantities.end(),
                                           [&](Quantity const & q) { return q.name == p.name; });
        double const value = computed == fit.quantities.end() ? std::nan("") : computed->value;
        double const difference = value - p.value;
        bool const agrees = std::fabs(difference) <= 0.5 * std::pow(10.0, -p.decimals);
        n_agreeing += agrees ? 1 : 0;
        std::printf("  %-16s %26s %22.*f %11.1e  %s\n", p.name.c_str(), p.printed.c_str(), p.decimals, value,
                    difference, agrees ? "agrees" : "DIFFERS");
    }
    return n_agreeing;
}
