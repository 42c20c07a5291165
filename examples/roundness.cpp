// Puts four circles to the points of a section, those of least squares, smallest enclosing, largest inscribed and
// narrowest ring, and draws them as an SVG picture: roundness POINTS.csv [PICTURE.svg]

#include "support/points_file.h"

#include <datumfit/datumfit.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace {

struct Drawn {
    giPoint2 centre;
    double radius;
};

struct Result {
    char const *name, *colour;
    std::vector<Drawn> circles;  // one, or the two of a ring
    double roundness;            // the difference of the largest and the smallest distance from the centre
};

double roundness_about(std::vector<giPoint2> const & points, giPoint2 const & centre) {
    double least = distance(points[0], centre), most = least;
    for (giPoint2 const & p : points) {
        double const d = distance(p, centre);
        least = std::min(least, d);
        most = std::max(most, d);
    }
    return most - least;
}

/// The better of two searches: neither the walk nor the simplex always finds the narrowest ring.
giCircle2 narrowest_ring(std::vector<giPoint2> const & points, double & zone) {
    giCircle2 const walked = sqMinMaxCircleFit::fit(points, zone);
    double other_zone = 0.0;
    std::vector<double> const no_radii(points.size(), 0.0);
    giCircle2 const searched = sqMinMaxCircleFit::fit_probed(points, no_radii, false, other_zone);
    if (zone <= other_zone) return walked;
    zone = other_zone;
    return searched;
}

bool fit_all(giPoint2coDynArr const & array, std::vector<Result> & results) {
    std::vector<giPoint2> const points(array.data(), array.data() + array.size());
    auto const add = [&](char const * name, char const * colour, std::vector<Drawn> const & circles) {
        results.push_back({name, colour, circles, roundness_about(points, circles[0].centre)});
    };
    giPoint2 centre;
    double radius = 0.0, deviation = 0.0, zone = 0.0;
    if (sqLeastSquareEvaluator::evaluate_circle(array, centre, radius, deviation) == 0) return false;
    add("least squares", "#1b6ca8", {{centre, radius}});
    giCircle2 const enclosing = sqMinimumCircumscribedCircle::fit_smallest_enclosing_circle(points);
    add("smallest enclosing", "#b3261e", {{enclosing.centre(), enclosing.radius()}});
    giCircle2 start(centre, radius);
    giCircle2 const inscribed = sqMaximumInscribedCircle::calculate_maximum_inscribed_circle(points, start);
    add("largest inscribed", "#2e7d32", {{inscribed.centre(), inscribed.radius()}});
    giCircle2 const ring = narrowest_ring(points, zone);
    add("narrowest ring", "#8e44ad",
        {{ring.centre(), ring.radius() + 0.5 * zone}, {ring.centre(), ring.radius() - 0.5 * zone}});
    return true;
}

/// A polar picture about a centre, in which departures from a radius are drawn larger than they are.
class Picture {
public:
    Picture(Drawn const & middle, double greatest_departure)
        : middle_(middle), gain_(greatest_departure > 0.0 ? 60.0 / greatest_departure : 0.0) {}

    double gain() const { return gain_ * middle_.radius / drawn_radius; }

    std::string dot(giPoint2 const & p) const {
        giVector2 const v = p - middle_.centre;
        char text[160];
        std::snprintf(text, sizeof text, "<circle cx='%.2f' cy='%.2f' r='2.5'/>\n", x_at(v, distance_of(v)),
                      y_at(v, distance_of(v)));
        return text;
    }

    /// The outline of a circle: where each ray from the middle leaves it.
    std::string outline(Drawn const & circle, char const * colour) const {
        giVector2 const c = circle.centre - middle_.centre;
        std::string path = "<path fill='none' stroke='" + std::string(colour) + "' d='";
        for (int k = 0; k < 360; ++k) {
            double const turn = k * std::acos(-1.0) / 180.0;
            giVector2 const ray(std::cos(turn), std::sin(turn));
            double const along = c.x() * ray.x() + c.y() * ray.y(), across = c.x() * ray.y() - c.y() * ray.x();
            double const reach = along + std::sqrt(std::max(0.0, circle.radius * circle.radius - across * across));
            char text[64];
            std::snprintf(text, sizeof text, "%c%.2f %.2f", k == 0 ? 'M' : 'L', x_at(ray, reach), y_at(ray, reach));
            path += text;
        }
        return path + "Z'/>\n";
    }

private:
    static constexpr double drawn_radius = 280.0, half = 400.0;

    static double distance_of(giVector2 const & v) { return v.length(); }
    double place(double reach) const { return drawn_radius + gain_ * (reach - middle_.radius); }
    double x_at(giVector2 const & v, double reach) const { return half + place(reach) * v.x() / distance_of(v); }
    double y_at(giVector2 const & v, double reach) const { return half - place(reach) * v.y() / distance_of(v); }

    Drawn middle_;
    double gain_;  // of a departure, in units of the picture
};

void write_svg(std::ostream & svg, giPoint2coDynArr const & points, std::vector<Result> const & results) {
    Drawn const & middle = results[0].circles[0];
    double departure = 0.0;
    for (int i = 0; i < points.size(); ++i) {
        departure = std::max(departure, std::fabs(distance(points[i], middle.centre).value() - middle.radius));
    }
    Picture const picture(middle, departure);
    svg << "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 800 800' font-family='sans-serif' font-size='15'>\n"
        << "<rect width='800' height='800' fill='white'/>\n";
    int row = 0;
    for (Result const & result : results) {
        for (Drawn const & circle : result.circles) svg << picture.outline(circle, result.colour);
        char text[240];
        std::snprintf(text, sizeof text, "<text x='400' y='%d' fill='%s' text-anchor='middle'>%s: %.6g</text>\n",
                      350 + 24 * row++, result.colour, result.name, result.roundness);
        svg << text;
    }
    for (int i = 0; i < points.size(); ++i) svg << picture.dot(points[i]);
    char text[160];
    std::snprintf(
        text, sizeof text,
        "<text x='400' y='%d' text-anchor='middle'>roundness about each; departures drawn %.0f times</text>\n",
        350 + 24 * row, picture.gain());
    svg << text << "</svg>\n";
}

}  // namespace

int main(int n_arguments, char ** arguments) {
    if (n_arguments < 2 || n_arguments > 3) {
        std::fprintf(stderr, "roundness: roundness POINTS.csv [PICTURE.svg]\n");
        return 2;
    }
    PointsFile file;
    PointsReader reader;
    if (!reader.read(arguments[1], file)) {
        std::fprintf(stderr, "roundness: %s\n", reader.error().c_str());
        return 1;
    }
    giPoint2coDynArr points(file.points.size(), 1);
    for (int i = 0; i < file.points.size(); ++i) points.append(file.points[i].xy());
    std::vector<Result> results;
    if (!fit_all(points, results)) {
        std::fprintf(stderr, "roundness: %s: no circle fits these points\n", arguments[1]);
        return 1;
    }
    std::printf("%-20s %14s %14s %14s %14s\n", "", "centre x", "centre y", "radius", "roundness");
    for (Result const & result : results) {
        for (Drawn const & circle : result.circles) {
            std::printf("%-20s %14.9f %14.9f %14.9f %14.9f\n", result.name, circle.centre.x(), circle.centre.y(),
                        circle.radius, result.roundness);
        }
    }
    if (n_arguments == 3) {
        std::ofstream svg(arguments[2]);
        write_svg(svg, points, results);
        if (!svg.flush()) {
            std::fprintf(stderr, "roundness: %s cannot be written\n", arguments[2]);
            return 1;
        }
        std::printf("drawn in %s\n", arguments[2]);
    }
    return 0;
}
