#pragma once

#include <datumfit/datumfit.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <utility>
#include <vector>

constexpr double probe_radius = 1.5;

/// What a touch probe tells: the centre of its ball, and roughly the direction from the surface to it.
struct Reading {
    giPoint3 centre;
    giUnitVec3 side;
};

/// Nominal surfaces side by side, as a host's own surface. The feet of a point are those on all of them, the nearest
/// first, but none much farther than that one: a centre that lies within the part, as long as that is out of place,
/// is not to be taken for one at the far wall.
class Compound : public sknSurf {
public:
    explicit Compound(double reach) : reach_(reach) {}

    void add(sknSurfPtr const & surface) { surfaces_.push_back(surface); }

    void project_point(giPoint3 const & point, sknSurfPointList & feet, int & status) const override {
        std::vector<std::pair<double, sknSurfPoint>> found;
        for (std::size_t i = 0; i < surfaces_.size(); ++i) {
            sknSurfPointList own(8, 8);
            (*surfaces_[i]).project_point(point, own, status);
            for (int k = 0; k < own.size(); ++k) {
                // u tells which surface, so that normal_at() can ask it.
                found.push_back({point.distance(own[k].point), {static_cast<double>(i), 0.0, own[k].point}});
            }
        }
        std::stable_sort(found.begin(), found.end(), [](auto const & a, auto const & b) { return a.first < b.first; });
        for (auto const & foot : found) {
            if (foot.first <= found[0].first + reach_) feet.append(foot.second);
        }
        status = found.empty() ? 1 : 0;
    }

    giUnitVec3 normal_at(sknSurfPoint const & at, double length_tolerance,
                         giAngle const & angle_tolerance) const override {
        sknSurf const & surface = *surfaces_[static_cast<std::size_t>(at.u)];
        sknSurfPointList feet(8, 8);
        int status = 0;
        surface.project_point(at.point, feet, status);  // a point of a surface is its own nearest foot
        return status == 0 ? surface.normal_at(feet[0], length_tolerance, angle_tolerance) : giUnitVec3();
    }

    void clone(sknSurfPtr & copy) const override {
        auto * const other = new Compound(reach_);
        for (sknSurfPtr const & surface : surfaces_) {
            other->surfaces_.emplace_back();
            (*surface).clone(other->surfaces_.back());
        }
        copy = other;
    }

protected:
    void apply(giXform3 const & x) override {
        for (sknSurfPtr & surface : surfaces_) transform(surface, x);
    }

private:
    std::vector<sknSurfPtr> surfaces_;
    double reach_;
};

/// A knob on a shaft: an ellipsoid about the origin and, off its middle, a cylinder downwards with a flat end.
class Knob {
public:
    double size() const { return length; }

    /// The nominal shape as triangles, nowhere farther than a few thousandths from the true one.
    sknMeshSurf mesh() const {
        Grid grid;
        grid.add(500, 250, [&](double s, double t) { return on_ball(turn * s, turn / 2.0 * t); });
        grid.add(300, 4, [&](double s, double t) { return on_shaft(turn * s, top + t * (bottom - top)).first; });
        grid.add(300, 1, [&](double s, double t) {
            return interpolate(on_shaft(turn * s, bottom).first, giPoint3(axis_x, axis_y, bottom), t);
        });
        return sknMeshSurf(grid.vertices, grid.triangles);
    }

    /// The same as analytic surfaces.
    Compound surfaces() const {
        Compound all(length / 30.0);
        sknSurfPtr ball(new sknSphereSurf(giPoint3(giOrigin), 1.0));
        sknSurf::transform(ball, giXform3(giXformScale, a, b, c));
        all.add(ball);
        giPoint3 const end(axis_x, axis_y, bottom);
        all.add(sknSurfPtr(new sknCylinderSurf(end, giUnitVec3(giAxisZ), shaft, 0.0, top - bottom)));
        giVector3 const across(0.0, shaft, 0.0), along(shaft, 0.0, 0.0);
        all.add(sknSurfPtr(new sknPlaneSurf(end, across, along)));
        return all;
    }

    /// Probe centres on the part after a motion, with errors of up to `noise` across the surface.
    std::vector<Reading> measure(giXform3 const & moved, double noise) const {
        std::mt19937 engine(1);
        auto const uniform = [&](double from, double to) {
            return from + (to - from) * (static_cast<double>(engine()) * 0x1p-32);
        };
        std::vector<Reading> readings;
        auto const add = [&](giPoint3 const & p, giUnitVec3 const & normal) {
            giVector3 const & n = normal;
            readings.push_back({moved * (p + (probe_radius + uniform(-noise, noise)) * n), giUnitVec3(moved * n)});
        };
        while (readings.size() < 400) {
            double const z = uniform(-1.0, 1.0);
            giPoint3 const p = on_ball(uniform(0.0, turn), std::acos(z));
            bool const below = std::hypot(p.x() - axis_x, p.y() - axis_y) < shaft + 5.0 && z < 0.0;
            if (!below) add(p, giUnitVec3(p.x() / (a * a), p.y() / (b * b), p.z() / (c * c)));
        }
        for (int i = 0; i < 120; ++i) {
            auto const place = on_shaft(uniform(0.0, turn), uniform(top - 5.0, bottom + 2.0));
            add(place.first, place.second);
        }
        for (int i = 0; i < 30; ++i) {
            double const t = uniform(0.0, turn), r = uniform(0.0, shaft - 1.0);
            add(giPoint3(axis_x + r * std::cos(t), axis_y + r * std::sin(t), bottom), giUnitVec3(0.0, 0.0, -1.0));
        }
        return readings;
    }

private:
    static constexpr double turn = 6.283185307179586;
    static constexpr double a = 30.0, b = 21.0, c = 15.0;  // semi-axes of the ball
    static constexpr double axis_x = 6.0, axis_y = -3.0, shaft = 7.0, top = -13.0, bottom = -45.0, length = 60.0;

    struct Grid {
        giPoint3coDynArr vertices = giPoint3coDynArr(1, 130000);
        sknTrianglecoDynArr triangles = sknTrianglecoDynArr(1, 260000);

        /// Triangles through n by m fields of a surface; those that have shrunk to nothing do no harm.
        template <class Place>
        void add(int n, int m, Place const & place) {
            int const first = vertices.size();
            for (int j = 0; j <= m; ++j) {
                for (int i = 0; i < n; ++i) vertices.append(place(i / double(n), j / double(m)));
            }
            for (int j = 0; j < m; ++j) {
                for (int i = 0; i < n; ++i) {
                    int const p = first + j * n + i, q = first + j * n + (i + 1) % n;
                    triangles.append({p, p + n, q + n});
                    triangles.append({p, q + n, q});
                }
            }
        }
    };

    static giPoint3 on_ball(double around, double down) {
        return giPoint3(a * std::sin(down) * std::cos(around), b * std::sin(down) * std::sin(around),
                        c * std::cos(down));
    }
    static std::pair<giPoint3, giUnitVec3> on_shaft(double around, double z) {
        giVector3 const out(std::cos(around), std::sin(around), 0.0);
        return {giPoint3(axis_x, axis_y, z) + shaft * out, giUnitVec3(out)};
    }
};
