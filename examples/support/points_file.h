#pragma once

#include <datumfit/datumfit.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

/// Measured points as a text file tells them.
struct PointsFile {
    std::vector<std::string> comments;  // without the # and the blanks around it
    std::vector<int> rows;              // the row of the file that each point stands in, counted from 1
    giPoint3coDynArr points;            // z is 0 in a file without it
    doublecoDynArr radii;               // probe radii, one for each point or none at all
    giUnitVec3coDynArr normals;         // approximate normals, one for each point or none at all
    bool has_z = false;
};

/// Reads columns of numbers, one point a row. It accepts whatever can be understood in one way only: commas, semicolons
/// or blanks between the columns, rows that end in CR LF, a byte order mark, comments (#) and a header row.
class PointsReader {
public:
    /// Fills a fresh `file`. On false, error() is one line that names the file and, where there is one, the row.
    bool read(std::string const & path, PointsFile & file);
    std::string const & error() const { return message; }

private:
    enum Column { x, y, z, r, nx, ny, nz };

    bool load(std::string & text);
    bool read_row(std::string_view line, PointsFile & file);
    bool read_first_row();
    bool read_header();
    bool append_point(PointsFile & file);
    void split(std::string_view line);
    bool has(Column column) const { return std::count(layout.begin(), layout.end(), column) != 0; }
    bool refuse(std::string const & reason);

    std::string path, message;
    int row = 0;                           // 0 while the fault is one of the whole file
    char separator = ' ';                  // a blank stands for any run of blanks and tabs
    std::vector<Column> layout;            // what each field of a row holds; empty before the first row
    std::vector<std::string_view> fields;  // of the current row
};

inline std::string_view trimmed(std::string_view text) {
    auto const first = text.find_first_not_of(" \t\r");
    return first == text.npos ? "" : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

/// A field as a message may show it: short, and without control characters.
inline std::string quoted(std::string_view field) {
    std::string shown(field.substr(0, 30));
    std::replace_if(
        shown.begin(), shown.end(), [](unsigned char c) { return c < ' ' || c > '~'; }, '?');
    return "'" + shown + "'";
}

/// Reads the number at the start of a field, whatever the locale. from_chars takes no plus, but many machines print
/// one.
inline std::from_chars_result scan_number(std::string_view field, double & value) {
    if (field.size() > 1 && field[0] == '+' && field[1] != '-') {
        field.remove_prefix(1);
    }
    return std::from_chars(field.data(), field.data() + field.size(), value);
}

/// The number that a field holds. Returns what is wrong with the field, or nothing.
inline std::string parse_number(std::string_view field, double & value) {
    // Far beyond any part, and small enough for the squares and products of a fit to stay finite.
    constexpr double largest = 1e50;
    auto const [stop, status] = scan_number(field, value);
    if (field.empty()) {
        return "a number is missing";
    }
    if (status == std::errc::invalid_argument || stop != field.data() + field.size()) {
        return quoted(field) + " is not a number";
    }
    if (status == std::errc() && !std::isfinite(value)) {
        return quoted(field) + " is not a finite number";
    }
    return status != std::errc() || std::fabs(value) > largest ? quoted(field) + " is out of range" : "";
}

inline bool PointsReader::refuse(std::string const & reason) {
    message = path + (row > 0 ? ": row " + std::to_string(row) : "") + ": " + reason;
    return false;
}

inline bool PointsReader::load(std::string & text) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        return refuse("there is no such file, or it may not be read");
    }
    std::array<char, 65536> block;
    while (stream.read(block.data(), block.size()), stream.gcount() > 0) {
        text.append(block.data(), static_cast<std::size_t>(stream.gcount()));
    }
    if (stream.bad()) {
        return refuse("cannot be read");
    }
    if (text.compare(0, 3, "\xEF\xBB\xBF") == 0) {
        text.erase(0, 3);
    }
    return true;
}

inline bool PointsReader::read(std::string const & from, PointsFile & file) {
    path = from;
    row = 0;
    layout.clear();
    std::string text;
    if (!load(text)) {
        return false;
    }
    int const n_rows = 1 + static_cast<int>(std::count(text.begin(), text.end(), '\n'));
    file.points.reserve(n_rows);  // appending would else copy the array for each point
    file.radii.reserve(n_rows);
    file.normals.reserve(n_rows);
    for (std::string_view rest = text; !rest.empty();) {
        auto const end = std::min(rest.find('\n'), rest.size());
        ++row;
        if (!read_row(trimmed(rest.substr(0, end)), file)) {
            return false;
        }
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    row = 0;
    file.has_z = has(z);
    return !file.rows.empty() || refuse("holds no points");
}

inline bool PointsReader::read_row(std::string_view line, PointsFile & file) {
    if (line.empty()) {
        return true;
    }
    if (line[0] == '#') {
        file.comments.emplace_back(trimmed(line.substr(1)));
        return true;
    }
    if (layout.empty()) {
        separator = line.find(';') != line.npos ? ';' : line.find(',') != line.npos ? ',' : ' ';
        split(line);
        double ignored = 0.0;
        if (std::none_of(fields.begin(), fields.end(), [&](std::string_view field) {
                return scan_number(field, ignored).ec != std::errc::invalid_argument;
            })) {
            return read_header();
        }
        if (!read_first_row()) {
            return false;
        }
    } else {
        split(line);
    }
    if (fields.size() != layout.size()) {
        return refuse(std::to_string(fields.size()) + " columns, where the first row has " +
                      std::to_string(layout.size()));
    }
    return append_point(file);
}

inline void PointsReader::split(std::string_view line) {
    fields.clear();
    for (;;) {
        auto const end = separator == ' ' ? line.find_first_of(" \t") : line.find(separator);
        fields.push_back(trimmed(line.substr(0, end)));
        if (end == line.npos) {
            return;
        }
        line.remove_prefix(end + 1);
        if (separator == ' ') {
            line = trimmed(line);
        }
    }
}

/// Takes the columns from the width of the first row of a file without a header.
inline bool PointsReader::read_first_row() {
    switch (fields.size()) {
        case 2:
            layout = {x, y};
            return true;
        case 3:
            layout = {x, y, z};
            return true;
        case 4:
            layout = {x, y, z, r};
            return true;
        case 6:
            layout = {x, y, z, nx, ny, nz};
            return true;
        case 7:
            layout = {x, y, z, r, nx, ny, nz};
            return true;
        default:
            return refuse("a header row must name columns as many as these " + std::to_string(fields.size()));
    }
}

inline bool PointsReader::read_header() {
    static constexpr std::array<char const *, 7> names{"x", "y", "z", "r", "nx", "ny", "nz"};
    for (std::string_view const field : fields) {
        std::string name(field);
        std::transform(name.begin(), name.end(), name.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        auto const known = std::find(names.begin(), names.end(), name);
        if (known == names.end()) {
            return refuse(quoted(field) + " is no column; known are x, y, z, r, nx, ny and nz");
        }
        auto const column = static_cast<Column>(known - names.begin());
        if (has(column)) {
            return refuse("column " + name + " stands twice");
        }
        layout.push_back(column);
    }
    if (!has(x) || !has(y)) {
        return refuse("columns x and y are needed");
    }
    bool const complete = has(nx) == has(ny) && has(nz) == (has(nx) && has(z));
    return complete || refuse("a normal needs a column for each coordinate");
}

inline bool PointsReader::append_point(PointsFile & file) {
    std::array<double, 7> value{};
    for (std::size_t k = 0; k < fields.size(); ++k) {
        std::string const fault = parse_number(fields[k], value[layout[k]]);
        if (!fault.empty()) {
            return refuse(fault);
        }
    }
    if (value[r] < 0.0) {
        return refuse("the probe radius is negative");
    }
    file.rows.push_back(row);
    file.points.append(giPoint3(value[x], value[y], value[z]));
    if (has(r)) {
        file.radii.append(value[r]);
    }
    if (has(nx)) {
        double const size = std::max({std::fabs(value[nx]), std::fabs(value[ny]), std::fabs(value[nz])});
        if (size == 0.0) {
            return refuse("the normal has no direction");
        }
        file.normals.append(giUnitVec3(value[nx] / size, value[ny] / size, value[nz] / size));
    }
    return true;
}
