#pragma once

#include "points_file.h"

#include <datumfit/datumfit.h>

#include <chrono>
#include <string>
#include <vector>

enum class Side { unknown, inside, outside };

/// What is fitted to what. Radii and normals that the arguments give have taken the place of those in the file.
struct Task {
    PointsFile file;
    Side side = Side::unknown;  // where the probe centres of a round primitive lie
    giPoint3 origin;            // invalid when not given
    giUnitVec3 normal, axis;    // invalid when not given

    bool is_probed() const { return file.radii.size() > 0; }
    /// What the probe adds to the distance of point i from a round primitive.
    double signed_radius(int i) const {
        return !is_probed() ? 0.0 : side == Side::inside ? file.radii.read(i) : -file.radii.read(i);
    }
};

struct Quantity {
    std::string name;
    double value;
    char const * note = "";
};

/// The outcome of one fit.
struct Fit {
    std::vector<Quantity> quantities;
    double deviation = 0.0;
    std::vector<double> residuals;  // of each point: its distance from the fitted surface, less the probe radius
    double milliseconds = 0.0;      // spent in the library
    std::string failure;            // why there is no fit, where the library tells

    /// Runs an entry of the library and takes its time.
    template <typename Entry>
    int timed(Entry const & entry) {
        auto const start = std::chrono::steady_clock::now();
        int const found = entry();
        milliseconds = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
        return found;
    }
    template <typename Triple>
    void add3(std::string const & name, Triple const & v, char const * note = "") {
        add2(name, v);
        quantities.push_back({name + " z", v.z(), note});
    }
    template <typename Pair>
    void add2(std::string const & name, Pair const & v) {
        quantities.push_back({name + " x", v.x()});
        quantities.push_back({name + " y", v.y()});
    }
    void add_radius(double radius) {
        quantities.push_back({"radius", radius});
        quantities.push_back({"diameter", 2.0 * radius});
    }
};

/// The points as seen along z.
inline giPoint2coDynArr seen_along_z(giPoint3coDynArr const & points) {
    giPoint2coDynArr flat(points.size(), 1);
    for (int i = 0; i < points.size(); ++i) {
        flat.append(points[i].xy());
    }
    return flat;
}
