#include "support/reference_case.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>

namespace reference {
namespace {

using Json = nlohmann::json;

constexpr long double pi = 3.14159265358979323846264338327950288L;

std::optional<Primitive> primitive_named(std::string const & name) {
    static std::map<std::string, Primitive> const primitives = {
        {"plane", Primitive::plane},   {"line2d", Primitive::line2},      {"line2", Primitive::line2},
        {"line3d", Primitive::line3},  {"circle2d", Primitive::circle},   {"circle2", Primitive::circle},
        {"circle", Primitive::circle}, {"sphere", Primitive::sphere},     {"circle3d", Primitive::circle3},
        {"cone", Primitive::cone},     {"cylinder", Primitive::cylinder},
    };
    auto const found = primitives.find(name);
    return found == primitives.end() ? std::nullopt : std::optional(found->second);
}

// Solutions are strings with more digits than a double holds; printed figures are plain numbers.
long double number(Json const & json) {
    return json.is_string() ? std::strtold(json.get_ref<std::string const &>().c_str(), nullptr)
                            : static_cast<long double>(json.get<double>());
}

// What stands under the first of the keys that is there; throws when none is, so that no renamed key goes unnoticed.
Json const & first_of(Json const & object, std::initializer_list<char const *> keys) {
    for (char const * key : keys) {
        if (object.contains(key)) return object.at(key);
    }
    return object.at(*keys.begin());
}

// Which coordinates are those of the problem: of points in space that lie in a coordinate plane, all but the one that
// varies least.
std::vector<std::size_t> coordinates_of(Primitive primitive, Json const & points) {
    std::vector<std::size_t> kept = {0, 1, 2};
    kept.resize(points.at(0).size());
    if (is_in_plane(primitive) && kept.size() == 3) {
        auto const range = [&](std::size_t k) {
            auto const [low, high] = std::minmax_element(
                points.begin(), points.end(),
                [k](Json const & a, Json const & b) { return a.at(k).get<double>() < b.at(k).get<double>(); });
            return high->at(k).get<double>() - low->at(k).get<double>();
        };
        kept.erase(std::min_element(kept.begin(), kept.end(),
                                    [&](std::size_t a, std::size_t b) { return range(a) < range(b); }));
    }
    return kept;
}

template <typename Number>
std::array<Number, 3> vector_of(Json const & json, std::vector<std::size_t> const & kept) {
    std::array<Number, 3> result{};
    for (std::size_t k = 0; k < kept.size(); ++k) {
        result[k] = static_cast<Number>(number(json.at(kept[k])));
    }
    return result;
}

Solution solution_of(Json const & given, Primitive primitive, std::vector<std::size_t> const & kept, std::size_t n) {
    Solution solution;
    solution.place =
        vector_of<long double>(first_of(given, {"centre", "point", "axis_point_at_centroid", "axis_point"}), kept);
    if (primitive != Primitive::circle && primitive != Primitive::sphere) {
        solution.direction = vector_of<long double>(first_of(given, {"normal", "direction", "axis"}), kept);
    }
    if (primitive == Primitive::cone) {
        solution.size = number(given.at("distance"));
        solution.half_angle = number(given.at("apex_angle_deg")) * pi / 360;
    } else if (!is_line(primitive) && primitive != Primitive::plane) {
        solution.size = number(first_of(given, {"radius", "diameter"}));
        if (!given.contains("radius")) solution.size /= 2;
    }
    // In the plane fitted first, the figure leaves the heights above the plane out; the deviation of the fit does not.
    if (given.contains("rms") && primitive != Primitive::circle_in_plane) solution.rms = number(given.at("rms"));
    if (given.contains("sum_of_squares")) solution.rms = std::sqrt(number(given.at("sum_of_squares")) / n);
    return solution;
}

Gain gain_of(Json const & given) {
    return {given.value("pos", 0.0L), given.value("angle", 0.0L), given.value("size", 0.0L),
            given.value("half_angle", 0.0L)};
}

// The tolerance in use, or for a cone within it a fourth of what parts the cone from a cylinder or a plane.
double cone_tolerance(double half_angle) {
    double const in_use = PointSet().cone_tolerance;
    double const nearest = std::min(half_angle, static_cast<double>(pi) / 2 - half_angle);
    return nearest > in_use ? in_use : nearest / 4;
}

void read_probe(Json const & given, std::vector<std::size_t> const & kept, PointSet & data) {
    if (given.contains("probe_radius")) data.radii.assign(data.points.size(), given.at("probe_radius").get<double>());
    if (given.contains("probe_radii")) data.radii = given.at("probe_radii").get<std::vector<double>>();
    data.inside = given.value("side", "inside") == "inside";
    data.approximate_normal = {};
    if (given.contains("approximate_normal")) {
        data.approximate_normal = vector_of<double>(given.at("approximate_normal"), kept);
    }
}

void add_cases(std::string const & file, Json const & head, Json const & given, Primitive primitive, Cases & cases) {
    Json const & points = given.at("points");
    std::vector<std::size_t> const kept = coordinates_of(primitive, points);
    Case found;
    found.file = file;
    found.id = given.at("id");
    found.data.primitive = primitive;
    for (Json const & point : points) {
        found.data.points.push_back(vector_of<double>(point, kept));
    }
    read_probe(given, kept, found.data);
    found.kind = given.contains("machine")               ? Case::machine
                 : head.contains("published_format")     ? Case::certified
                 : head.value("points", "") == "doubles" ? Case::exact
                                                         : Case::decimal;
    Json const & results = first_of(given, {"verified", "machine"});
    bool const has_several = results.contains("least_squares") || results.contains("free");
    Json const & result = has_several ? first_of(results, {"least_squares", "free"}) : results;
    auto const add = [&](Primitive as, Json const & truth, Json const & gain) {
        found.data.primitive = as;
        found.truth = solution_of(truth, as, kept, points.size());
        if (as == Primitive::cone) {
            found.data.cone_tolerance = cone_tolerance(static_cast<double>(found.truth.half_angle));
        }
        found.noise_gain = gain_of(gain);
        cases.known.push_back(found);
    };
    Json const gain = given.value("noise_gain", Json::object());
    if (primitive == Primitive::circle3) {
        add(Primitive::circle_in_plane, result, gain);
        add(Primitive::circle3, given.value("verified_full_space", result), given.value("noise_gain_full_space", gain));
    } else {
        add(primitive, result, gain);
    }
}

}  // namespace

Cases read_cases(std::string const & folder) {
    std::vector<std::filesystem::path> files;
    for (auto const & entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() == ".json") files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());

    Cases cases;
    for (auto const & file : files) {
        std::ifstream in(file);
        Json const head = Json::parse(in);
        for (Json const & given : head.at("cases")) {
            // Measured profiles of round parts, with several kinds of circles, need not name their primitive.
            std::string const primitive_name = given.value("primitive", head.value("primitive", "circle2"));
            std::optional<Primitive> const primitive = primitive_named(primitive_name);
            if (!primitive) {
                ++cases.skipped[primitive_name + ", which no fit covers"];
            } else if (given.at("id") == "con7") {
                ++cases.skipped["con7, six points that several cones go through"];
            } else {
                add_cases(file.filename().string(), head, given, *primitive, cases);
            }
        }
    }
    return cases;
}

}  // namespace reference
