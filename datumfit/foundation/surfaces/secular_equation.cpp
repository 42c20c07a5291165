#include <datumfit/foundation/surfaces/secular_equation.h>

#include <algorithm>
#include <cmath>

namespace datumfit {
namespace internal {

namespace {

// Newton's method about squares the error, so that the step behind one of this share of the distance from the nearest
// pole is the last.
constexpr double nearly_there = 0x1p-27;

// Near a double root, over a centre of curvature, each step halves the error only.
constexpr int step_limit = 64;

// How far, relative to the size of all, a point in a plane of symmetry is taken off it. Lost in any other point.
constexpr double off_plane = 0x1p-300;

// Farther than any root.
constexpr double far_out = 0x1p+1000;

}  // namespace

secular_equation::secular_equation(quadric kind, double s0, double s1, double s2)
    : kind_(kind), semi_axes_{s0, s1, kind == ellipsoid ? s2 : 1.0} {
    double const * const s = semi_axes_;
    for (int i = 0; i < 3; ++i) {
        for (int k = 0; k < 3; ++k) gaps_[i][k] = (s[i] - s[k]) * (s[i] + s[k]);
    }
    if (kind != elliptic_cone) return;
    for (int i = 0; i < 2; ++i) {
        gaps_[i][2] = 1.0 + s[i] * s[i];
        gaps_[2][i] = -gaps_[i][2];
    }
}

// The search for one point. Places t are told by their distance from a pole, which keeps the digits of the distance
// from poles that a root is close to.
struct secular_equation::search {
    secular_equation const & equation;
    int terms;          // of the sum
    double a[3];        // s_i p_i
    double side = 1.0;  // -1 above the cone's own pole

    // t = pole number `pole` + distance.
    struct place {
        int pole;
        double distance;
    };

    struct value {
        double excess, slope;  // of f - l
        double nearest;        // distance to a pole of f
    };

    double from_pole(int i, place const & t) const { return t.distance + equation.gaps_[i][t.pole]; }

    double magnitude(int i) const { return std::abs(a[i]); }

    double length() const {
        double squares = 0.0;
        for (int i = 0; i < terms; ++i) squares += a[i] * a[i];
        return std::sqrt(squares);
    }

    value at(place const & t) const {
        double squares = 0.0, cubes = 0.0, nearest = far_out;
        for (int i = 0; i < terms; ++i) {
            double const d = from_pole(i, t), over = 1.0 / d, r = a[i] * over;
            squares += r * r;
            cubes += r * r * over;
            nearest = std::min(nearest, std::abs(d));
        }
        double const f = 1.0 / std::sqrt(squares), slope = f * (cubes / squares);
        if (equation.kind_ != elliptic_cone) return {f - 1.0, slope, nearest};
        double const d = from_pole(2, t), tilt = -side / magnitude(2);
        return {f - tilt * d, slope - tilt, nearest};
    }

    // Goes from a place where f < l to the nearest root in this direction, which may be as far as `limit`, also a
    // distance from the pole. False if there is none.
    bool climb(place & t, double direction, double limit) const {
        for (int step = 0; step < step_limit; ++step) {
            value const v = at(t);
            if (!(direction * v.slope > 0.0)) return v.excess >= 0.0;
            double const change = -v.excess / v.slope;
            t.distance += change;
            if (!(direction * (limit - t.distance) > 0.0)) return false;
            if (std::abs(change) <= nearly_there * v.nearest) break;
        }
        return true;
    }

    // A start for climbing outwards: `bound` from the pole, or beyond that where a step of Newton's method from a guess
    // lands, unless that is so near to the pole that rounding may have taken it past the root.
    place start_near(place const & guess, double direction, double bound) const {
        constexpr double least_share = 0x1p-20;
        double const distance = direction * guess.distance, least = std::max(bound, least_share * distance);
        if (!(distance > least)) return {guess.pole, direction * bound};
        value const v = at(guess);
        double const landing = distance - direction * v.excess / v.slope;
        bool const is_sound = direction * v.slope > 0.0 && landing > least;
        return {guess.pole, direction * (is_sound ? landing : bound)};
    }

    // The first step from a pole, where f rises with the slope 1 / |a| from 0, in this direction; 0 when l rises more.
    double first_step(int pole, double direction) const {
        if (equation.kind_ != elliptic_cone) return magnitude(pole);
        double const height = side * equation.gaps_[pole][2] / magnitude(2);
        double const rise = 1.0 / magnitude(pole) + side * direction / magnitude(2);
        return rise > 0.0 ? height / rise : 0.0;
    }

    // Newton's method from the root as it is known, with its distance from the pole that is nearest now.
    void refine(place & t) const {
        int nearest = t.pole;
        int const poles = equation.kind_ == elliptic_cone ? 3 : terms;
        for (int i = 0; i < poles; ++i) {
            if (std::abs(from_pole(i, t)) < 0.25 * std::abs(from_pole(nearest, t))) nearest = i;
        }
        if (nearest == t.pole) return;
        t = {nearest, from_pole(nearest, t)};
        for (int step = 0; step < step_limit; ++step) {
            value const v = at(t);
            double const change = -v.excess / v.slope;
            // Beside the pole of the cone's z the line is all, and each step takes rounding of the last one away.
            if (!(std::abs(change) < 0.5 * v.nearest) && nearest != 2) return;
            t.distance += change;
            if (std::abs(change) <= nearly_there * std::abs(t.distance)) return;
        }
    }

    void add(place t, feet & found) const {
        refine(t);
        double * const y = found.places[found.n++];
        for (int i = 0; i < 3; ++i) y[i] = equation.semi_axes_[i] * (a[i] / from_pole(i, t));
        if (equation.kind_ == elliptic_cone) y[2] = -y[2];
        if (equation.kind_ == elliptic_cylinder) y[2] = a[2];
    }

    // Both roots between two neighbouring poles, if any.
    void between(int lower, int upper, feet & found) const {
        double const gap = equation.gaps_[lower][upper];
        double const up = first_step(lower, 1.0), down = first_step(upper, -1.0);
        if (!(up > 0.0 && down > 0.0 && up + down < gap)) return;
        place low{lower, up}, high{upper, -down};
        if (!climb(low, 1.0, gap)) return;
        add(low, found);
        if (climb(high, -1.0, -gap)) add(high, found);
    }

    // A lower bound of the distance from an outermost pole beyond which |r_i| <= 1 for each i.
    double outer_bound(int pole) const {
        double bound = 0.0;
        for (int i = 0; i < terms; ++i) bound = std::max(bound, magnitude(i) - std::abs(equation.gaps_[i][pole]));
        return bound;
    }

    void find_on_closed(feet & found) const {
        double const * const s = equation.semi_axes_;
        int const last = terms - 1;
        // The nearest foot: for points on the surface t is 0. The farthest: for equal axes all poles are one.
        place t = start_near({0, s[0] * s[0]}, 1.0, outer_bound(0));
        if (climb(t, 1.0, far_out)) add(t, found);
        t = start_near({last, -length()}, -1.0, outer_bound(last));
        if (climb(t, -1.0, -far_out)) add(t, found);
        for (int i = 0; i < last; ++i) between(i + 1, i, found);
    }

    void find_on_cone(feet & found) {
        double const * const s = equation.semi_axes_;
        // On the nappe that the point is on: for points on the surface t is 0. There is a root before t = 1, but
        // rounding may take it past that.
        place t = start_near({0, s[0] * s[0]}, 1.0, first_step(0, 1.0));
        if (climb(t, 1.0, far_out)) add(t, found);
        between(1, 0, found);

        // Far out f goes along (|t| - mean) / A, from below it, with the mean of the poles by their a_i². The place
        // where that meets l is before the root, and the root itself when the poles are equal.
        double const A = length(), over_A = 1.0 / A;
        double const c0 = a[0] * over_A, c1 = a[1] * over_A;
        double const mean = -(c0 * c0 * s[0] * s[0] + c1 * c1 * s[1] * s[1]);
        double const b = magnitude(2);
        if (b < A) {
            side = -1.0;
            t = {2, (1.0 - mean) * b / (A - b)};
            if (climb(t, -1.0, 0.0)) add(t, found);
        } else if (b > A) {
            double const meeting = (1.0 - mean) * A / (b - A) + c0 * c0 * equation.gaps_[0][1];
            t = {1, -std::max(meeting, first_step(1, -1.0))};
            if (climb(t, -1.0, -far_out)) add(t, found);
        }
    }
};

void secular_equation::find(double const (&p)[3], feet & found) const {
    double size = semi_axes_[kind_ == ellipsoid ? 2 : 1];
    if (kind_ == elliptic_cone) size = std::max({std::abs(p[0]), std::abs(p[1]), std::abs(p[2])});
    int const terms = kind_ == ellipsoid ? 3 : 2;
    search s{*this, terms, {}};
    for (int i = 0; i < 3; ++i) {
        double const a = semi_axes_[i] * p[i], least = off_plane * size * semi_axes_[i];
        s.a[i] = std::abs(a) > least || (i >= terms && kind_ == elliptic_cylinder) ? a : least;
    }
    if (kind_ != elliptic_cone) return s.find_on_closed(found);
    if (size > 0.0) s.find_on_cone(found);
}

}  // namespace internal
}  // namespace datumfit
