// Fits a line, plane, circle, ellipse, sphere, cylinder, cone or torus to the points of a file, or compares fits with
// published ones; --help tells more.

#include "support/fits.h"
#include "support/points_file.h"
#include "support/published.h"

#include <datumfit/datumfit.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace {

enum ExitCode { success = 0, bad_data = 1, bad_usage = 2 };

struct Arguments {
    Primitive const * primitive = nullptr;
    Task task;
    double probe_radius = -1.0;  // negative when not given
    bool exact = false, help = false, published = false;
    std::vector<std::string> files;
};

int fail(ExitCode code, std::string const & reason) {
    std::fprintf(stderr, "fit_points: %s\n", reason.c_str());
    return code;
}

void print_help() {
    std::printf(
        "Fits a primitive to the points of a file: least mean square of the orthogonal distances. Those in one pass\n"
        "have the least algebraic ones, which is quicker, and less exact on short arcs.\n\n"
        "  fit_points PRIMITIVE [OPTION...] FILE\n"
        "  fit_points --published FILE...     compares with the published values that the files quote\n\n"
        "PRIMITIVE\n");
    for (Primitive const & primitive : primitives) {
        std::printf("  %-14s %s, %d points or more\n", primitive.name, primitive.description, primitive.fewest_points);
    }
    std::printf(
        "\n"
        "OPTION\n"
        "  --inside, --outside   where the probe centres of circle, sphere, cylinder, cone and torus lie: within a\n"
        "                        bore or tube, around a boss or ring\n"
        "  --probe-radius R      one probe radius for all points, in place of the column r; 0 for the plain fit\n"
        "  --normal X,Y,Z        normal of the plane of line2, circle2 and ellipse2; for probed points of a\n"
        "                        plane or line the direction from the surface to the probe, in place of the columns\n"
        "                        nx,ny,nz\n"
        "  --origin X,Y,Z        a point of the plane of line2, circle2 and ellipse2\n"
        "  --axis X,Y,Z          preferred axis of a cylinder or cone: where points fit several nearly as well, one\n"
        "                        within 10 degrees of it is taken\n"
        "  --exact               17 significant digits, which tell every double apart\n"
        "  --help\n\n"
        "FILE\n"
        "  One point a row: x,y or x,y,z, and where the points are centres of a probe its radius r; an\n"
        "  approximate normal nx,ny,nz may follow. Commas, semicolons, blanks or tabs stand between the\n"
        "  columns. A first row of these names settles their order; without it they are x,y; x,y,z; x,y,z,r;\n"
        "  x,y,z,nx,ny,nz or x,y,z,r,nx,ny,nz. Rows that begin with # are comments. Primitives in x and y use\n"
        "  these alone, and circle3 a sample of 10000 points when there are more. direct_ellipse and\n"
        "  direct_sphere want points near the origin. Lengths come out in the unit that they came in. Residuals\n"
        "  of round primitives in x and y and of surfaces are positive outside, negative within.\n\n"
        "The result is 0, 1 for points that cannot be fitted or that differ from the published values, and 2\n"
        "for arguments that cannot be understood.\n");
}

bool parse_triple(std::string const & text, double (&v)[3]) {
    std::string rest = text + ",";
    for (double & value : v) {
        auto const comma = rest.find(',');
        if (comma == rest.npos || !parse_number(trimmed(rest.substr(0, comma)), value).empty()) {
            return false;
        }
        rest.erase(0, comma + 1);
    }
    return rest.empty();
}

/// Takes an option that is followed by a value.
bool parse_value(std::string const & option, std::string const & text, Arguments & arguments) {
    if (option == "--probe-radius") {
        return parse_number(text, arguments.probe_radius).empty() && arguments.probe_radius >= 0.0;
    }
    double v[3];
    if (!parse_triple(text, v)) {
        return false;
    }
    if (option == "--origin") {
        arguments.task.origin = giPoint3(v[0], v[1], v[2]);
        return true;
    }
    giUnitVec3 & direction = option == "--axis" ? arguments.task.axis : arguments.task.normal;
    direction = giUnitVec3(v[0], v[1], v[2]);
    return !direction.invalid();
}

Primitive const * find_primitive(std::string const & name) {
    auto const named =
        std::find_if(primitives.begin(), primitives.end(), [&](Primitive const & p) { return p.name == name; });
    return named == primitives.end() ? nullptr : &*named;
}

/// Returns what cannot be understood, or nothing.
std::string parse_arguments(std::vector<std::string> const & words, Arguments & arguments) {
    for (std::size_t i = 0; i < words.size(); ++i) {
        std::string const & word = words[i];
        if (word == "--help" || word == "-h") {
            arguments.help = true;
        } else if (word == "--published") {
            arguments.published = true;
        } else if (word == "--exact") {
            arguments.exact = true;
        } else if (word == "--inside" || word == "--outside") {
            arguments.task.side = word == "--inside" ? Side::inside : Side::outside;
        } else if (word == "--probe-radius" || word == "--origin" || word == "--normal" || word == "--axis") {
            if (i + 1 == words.size() || !parse_value(word, words[i + 1], arguments)) {
                return word + (word == "--probe-radius" ? " needs a length" : " needs three numbers X,Y,Z");
            }
            ++i;
        } else if (word.size() > 1 && word[0] == '-') {
            return "there is no option " + word;
        } else if (arguments.primitive == nullptr && !arguments.published) {
            arguments.primitive = find_primitive(word);
            if (arguments.primitive == nullptr) {
                return "there is no primitive " + word;
            }
        } else {
            arguments.files.push_back(word);
        }
    }
    bool const enough = arguments.published ? !arguments.files.empty() : arguments.files.size() == 1;
    return enough || arguments.help ? "" : "a primitive and one file are needed";
}

/// Settles radii and normals; returns what stands between arguments and points, or nothing.
std::string prepare(Arguments & arguments) {
    Primitive const & primitive = *arguments.primitive;
    Task & task = arguments.task;
    int const n = task.file.points.size();
    if (arguments.probe_radius >= 0.0) {
        task.file.radii = doublecoDynArr(n, 1);
        for (int i = 0; i < n && arguments.probe_radius > 0.0; ++i) {
            task.file.radii.append(arguments.probe_radius);
        }
    }
    if (!task.normal.invalid()) {
        task.file.normals = giUnitVec3coDynArr{task.normal};
    }
    if (primitive.in_given_plane && (task.origin.invalid() || task.normal.invalid())) {
        return "needs --origin and --normal";
    }
    if (task.is_probed() && primitive.probe == Probe::none) {
        return "takes no probe radii (--probe-radius 0 fits the probe centres)";
    }
    if (task.is_probed() && primitive.probe == Probe::inside_or_outside && task.side == Side::unknown) {
        return "with probe radii needs --inside or --outside";
    }
    if (task.side != Side::unknown && primitive.probe != Probe::inside_or_outside) {
        return "takes neither --inside nor --outside";
    }
    if (!task.axis.invalid() && !primitive.has_axis) {
        return "takes no --axis";
    }
    if (task.side != Side::unknown && !task.is_probed() && arguments.probe_radius < 0.0) {
        return "needs a column r or --probe-radius with --inside or --outside";
    }
    return "";
}

/// Why these points cannot be fitted, or nothing.
std::string refusal(Primitive const & primitive, PointsFile const & file) {
    int const n = file.points.size();
    if (!primitive.is_seen_flat && !file.has_z) {
        return "a column z is needed for " + std::string(primitive.name);
    }
    if (n < primitive.fewest_points) {
        return "too few points for " + std::string(primitive.name) + ": " + std::to_string(n) + ", where " +
               std::to_string(primitive.fewest_points) + " are needed";
    }
    for (int i = 0; i < file.normals.size() && primitive.is_seen_flat && file.radii.size() > 0; ++i) {
        if (file.normals[i].x() == 0.0 && file.normals[i].y() == 0.0) {
            std::string const row =
                file.normals.size() == n ? std::to_string(file.rows[static_cast<std::size_t>(i)]) : "";
            return (row.empty() ? "--normal" : "row " + row + ": the normal") + " has no direction in x and y";
        }
    }
    std::string const shape = degeneracy(primitive, file.points);
    return shape.empty() ? "" : shape + " and determine no " + primitive.name;
}

/// Reads the file and fits. The arguments come back with the points and all that was settled by them.
int run(std::string const & path, Arguments & arguments, Fit & fit) {
    PointsReader reader;
    if (!reader.read(path, arguments.task.file)) {
        return fail(bad_data, reader.error());
    }
    std::string const conflict = prepare(arguments);
    if (!conflict.empty()) {
        return fail(bad_usage, path + ": " + arguments.primitive->name + " " + conflict);
    }
    std::string const reason = refusal(*arguments.primitive, arguments.task.file);
    if (!reason.empty()) {
        return fail(bad_data, path + ": " + reason);
    }
    if (arguments.primitive->fit(arguments.task, fit) == 0 || !std::isfinite(fit.deviation)) {
        return fail(bad_data,
                    path + ": " +
                        (fit.failure.empty() ? std::string("the points determine no ") + arguments.primitive->name
                                             : fit.failure));
    }
    return success;
}

void print_value(std::string const & name, double value, bool exact) {
    std::printf(exact ? "  %-18s %26.17g" : "  %-18s %20.10f", name.c_str(), value);
}

void print_largest_residual(Arguments const & arguments, Fit const & fit) {
    PointsFile const & file = arguments.task.file;
    auto const largest = std::max_element(fit.residuals.begin(), fit.residuals.end(),
                                          [](double a, double b) { return std::fabs(a) < std::fabs(b); });
    auto const i = largest - fit.residuals.begin();
    giPoint3 const & p = file.points.read(static_cast<int>(i));
    print_value("largest residual", *largest, arguments.exact);
    std::printf("   in row %d, at %.10g, %.10g", file.rows[static_cast<std::size_t>(i)], p.x(), p.y());
    if (file.has_z) {
        std::printf(", %.10g", p.z());
    }
    std::printf("\n");
}

void print_report(std::string const & path, Arguments const & arguments, Fit const & fit) {
    Task const & task = arguments.task;
    int const n = task.file.points.size();
    std::printf("%s fitted to %d points of %s", arguments.primitive->name, n, path.c_str());
    if (task.is_probed()) {
        std::printf(", probe centres%s", task.side == Side::inside    ? " inside"
                                         : task.side == Side::outside ? " outside"
                                                                      : "");
    }
    std::printf("\n\n");
    for (Quantity const & quantity : fit.quantities) {
        print_value(quantity.name, quantity.value, arguments.exact);
        std::printf("%s%s\n", *quantity.note != '\0' ? "   " : "", quantity.note);
    }
    print_value("deviation", fit.deviation, arguments.exact);
    bool const sampled = arguments.primitive->fit == fit_circle3 && n > 10000;
    std::printf("   root mean square of the residuals%s\n", sampled ? " of a sample of 10000 points" : "");
    print_largest_residual(arguments, fit);
    std::printf("  %-18s %*.3f ms\n", "time", arguments.exact ? 23 : 17, fit.milliseconds);
    if (task.is_probed() && arguments.primitive->probe == Probe::by_normals && task.file.normals.size() == 0) {
        std::printf(
            "\n  No normal tells on which side of the surface the probe was, so the better fit decided. With equal\n"
            "  radii both fit alike: give --normal or columns nx,ny,nz.\n");
    }
}

struct Comparison {
    int n_values = 0, n_agreeing = 0;
};

/// Makes the fit that the comments of a file ask for, and compares it with the values that they quote.
int compare_file(std::string const & path, Comparison & sum) {
    PointsReader reader;
    PointsFile file;
    if (!reader.read(path, file)) {
        return fail(bad_data, reader.error());
    }
    std::vector<std::string> const tasks = comments_with(file, "fit");
    std::vector<Published> const values = published_values(file);
    if (tasks.size() != 1 || values.empty()) {
        return fail(bad_data, path + ": needs one comment '# fit: PRIMITIVE' and some '# published: NAME = VALUE'");
    }
    std::istringstream stream(tasks[0]);
    std::vector<std::string> words{std::istream_iterator<std::string>(stream), {}};
    words.push_back(path);
    Arguments arguments;
    std::string const fault = parse_arguments(words, arguments);
    if (!fault.empty() || arguments.primitive == nullptr) {
        return fail(bad_data, path + ": cannot fit " + tasks[0]);
    }
    Fit fit;
    int const code = run(path, arguments, fit);
    if (code == success) {
        std::printf("\n%s, %d points: %s\n", arguments.primitive->name, file.points.size(), file.comments[0].c_str());
        sum.n_values += static_cast<int>(values.size());
        sum.n_agreeing += compare(values, fit);
    }
    return code;
}

int compare_files(std::vector<std::string> const & paths) {
    Comparison sum;
    std::printf("  %-16s %26s %22s %11s\n", "quantity", "published", "computed", "difference");
    for (std::string const & path : paths) {
        int const code = compare_file(path, sum);
        if (code != success) {
            return code;
        }
    }
    std::printf("\n%d of %d published values agree to the digits printed, at most to %d decimals.\n", sum.n_agreeing,
                sum.n_values, most_decimals);
    return sum.n_agreeing == sum.n_values ? success : bad_data;
}

}  // namespace

int main(int argc, char * argv[]) {
    Arguments arguments;
    std::string const fault = parse_arguments({argv + 1, argv + argc}, arguments);
    if (!fault.empty()) {
        return fail(bad_usage, fault + "; fit_points --help tells more");
    }
    if (arguments.help) {
        print_help();
        return success;
    }
    if (arguments.published) {
        return compare_files(arguments.files);
    }
    Fit fit;
    std::string const & path = arguments.files[0];
    int const code = run(path, arguments, fit);
    if (code == success) {
        print_report(path, arguments, fit);
    }
    return code;
}
