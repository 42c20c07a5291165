#include <datumfit/extremal/containment_cone.h>

#include <datumfit/foundation/maths/random.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace {

// The square of the chord below which two directions count as the same one of the support.
constexpr double same_direction = 1e-5;

// The square of 1e-7: the least length of a vector that has a direction.
constexpr double least_square = 9.999999999999998e-15;

// How far, in radians, a cone may miss a direction where none holds all, and may come to a right angle.
constexpr double slack = 1e-7;

constexpr double full_turn = 6.283185307179586;
constexpr double right_angle = 1.5707963267948966;
constexpr double none = std::numeric_limits<double>::max();

double square(giVector3 const & v) {
    return v.dot(v);
}

// The value of a half angle. Only a full turn reads as a negative one.
double radians(giAngle const & angle) {
    double const value = angle.angle(giAngleRadians);
    return value < 0.0 ? value + full_turn : value;
}

// Whether a direction is inside a cone beyond all doubt of rounding, which spares the arc tangent.
bool well_inside(giUnitVec3 const & direction, giUnitVec3 const & axis, giAngle const & angle) {
    return direction.dot(axis) > angle.cos() + 1e-14;
}

}  // namespace

struct sqContainmentCone::cone {
    giUnitVec3 axis;
    giAngle angle = giAngle(giAngleRadians, full_turn);
    double width() const { return radians(angle); }
    bool contains(giUnitVec3 const & direction, double & excess) const {
        return inside_cone(direction, axis, angle, excess) != 0;
    }
};

void sqContainmentCone::exact_cone1(giUnitVec3 const & a, giUnitVec3 & axis, giAngle & angle) {
    axis = a;
    angle = giAngle(giAngle0);
}

void sqContainmentCone::exact_cone2(giUnitVec3 const & a, giUnitVec3 const & b, giUnitVec3 & axis, giAngle & angle) {
    giVector3 const v = giVector3(a) + giVector3(b);
    if (!(square(v) > least_square)) {
        status_ = 0;
        return;
    }
    giUnitVec3 const middle(v);
    angle = unsigned_angle(a, middle);
    axis = middle;
}

void sqContainmentCone::exact_cone3(giUnitVec3 const & a, giUnitVec3 const & b, giUnitVec3 const & c, giUnitVec3 & axis,
                                    giAngle & angle) {
    giVector3 const u = giVector3(b) - giVector3(a), v = giVector3(c) - giVector3(a);
    giUnitVec3 const first = a;  // the results may be among the arguments
    axis = giUnitVec3(giAxisZ);
    angle = giAngle(giAngleRadians, full_turn);
    if (square(u) < least_square || square(v) < least_square) return;
    // The tips lie in the plane of the rim, whose normal is the axis.
    giVector3 n = giUnitVec3(u).cross(giUnitVec3(v));
    if (square(n) < least_square) {
        status_ = 0;
        return;
    }
    if (n.dot(first) < 0.0) n = -n;
    axis = giUnitVec3(n);
    angle = unsigned_angle(first, axis);
    if (radians(angle) + slack > right_angle) status_ = 0;
}

int sqContainmentCone::inside_cone(giUnitVec3 const & direction, giUnitVec3 const & axis, giAngle const & angle,
                                   double & excess) {
    excess = unsigned_angle(direction, axis).angle(giAngleRadians) - radians(angle);
    return excess <= 0.0 ? 1 : 0;
}

int sqContainmentCone::in_support(int index) {
    for (int s = 0; s < support_count_; ++s) {
        if (square(giVector3(directions_.read(index)) - giVector3(supporting(s))) < same_direction) return 1;
    }
    return 0;
}

void sqContainmentCone::update_support(int index, giUnitVec3 & axis, giAngle & angle) {
    angle = giAngle(giAngleRadians, full_turn);
    if (support_count_ == 1) {
        update_support1(index, axis, angle);
    } else if (support_count_ == 2) {
        update_support2(index, axis, angle);
    } else {
        update_support3(index, axis, angle);
    }
}

void sqContainmentCone::update_support1(int index, giUnitVec3 & axis, giAngle & angle) {
    exact_cone2(supporting(0), directions_.read(index), axis, angle);
    support_count_ = 2;
    support_[1] = index;
}

void sqContainmentCone::update_support2(int index, giUnitVec3 & axis, giAngle & angle) {
    giUnitVec3 const &a = supporting(0), &b = supporting(1), &p = directions_.read(index);
    double excess = 0.0;
    cone candidate;
    exact_cone2(a, p, candidate.axis, candidate.angle);
    if (!status_) return;
    bool const first_holds = candidate.contains(b, excess);
    if (first_holds) {
        axis = candidate.axis;
        angle = candidate.angle;
    }
    exact_cone2(b, p, candidate.axis, candidate.angle);
    if (!status_) return;
    if (radians(angle) > candidate.width() && candidate.contains(a, excess)) {
        axis = candidate.axis;
        angle = candidate.angle;
        support_[0] = index;
    } else if (first_holds) {
        support_[1] = index;
    } else {
        exact_cone3(a, b, p, axis, angle);
        if (!status_) return;
        support_count_ = 3;
        support_[2] = index;
    }
}

void sqContainmentCone::update_support3(int index, giUnitVec3 & axis, giAngle & angle) {
    // Slot 3 stands for the new direction. A cone of two has no third slot.
    struct choice {
        int rim[3], must_hold[2], support[3];
    };
    static constexpr int count = 6;
    static constexpr choice choices[count] = {{{0, 3, -1}, {1, 2}, {0, 3, -1}}, {{1, 3, -1}, {0, 2}, {3, 1, -1}},
                                              {{2, 3, -1}, {0, 1}, {2, 3, -1}}, {{0, 1, 3}, {2, -1}, {0, 1, 3}},
                                              {{0, 2, 3}, {1, -1}, {0, 3, 2}},  {{1, 2, 3}, {0, -1}, {3, 1, 2}}};
    int const members[] = {support_[0], support_[1], support_[2], index};
    auto const direction = [&](int slot) -> giUnitVec3 const & { return directions_.read(members[slot]); };

    cone candidates[count];
    double best_angle = none, least_excess = none;
    int chosen = -1, fallback = -1;
    for (int k = 0; k < count; ++k) {
        choice const & c = choices[k];
        cone & candidate = candidates[k];
        if (c.rim[2] < 0) {
            exact_cone2(direction(c.rim[0]), direction(c.rim[1]), candidate.axis, candidate.angle);
        } else {
            exact_cone3(direction(c.rim[0]), direction(c.rim[1]), direction(c.rim[2]), candidate.axis, candidate.angle);
        }
        if (!status_) return;
        if (!(candidate.width() < best_angle)) continue;
        double excess = 0.0;
        bool const holds = std::all_of(std::begin(c.must_hold), std::end(c.must_hold), [&](int slot) {
            return slot < 0 || candidate.contains(direction(slot), excess);
        });
        if (holds) {
            best_angle = candidate.width();
            chosen = k;
        } else if (excess < least_excess) {
            least_excess = excess;
            fallback = k;
        }
    }
    if (chosen < 0) {
        if (least_excess > slack) {
            status_ = 0;
            return;
        }
        chosen = fallback;
    }
    axis = candidates[chosen].axis;
    angle = candidates[chosen].angle;
    support_count_ = 0;
    for (int const slot : choices[chosen].support) {
        if (slot >= 0) support_[support_count_++] = members[slot];
    }
}

void sqContainmentCone::shuffle() {
    mlRandom random(1);
    for (int i = directions_.size() - 1; i >= 1; --i) {
        int const j = random.rand() % (i + 1);
        if (j != i) std::swap(directions_[i], directions_[j]);
    }
}

int sqContainmentCone::solve(giUnitVec3 & axis, giAngle & angle) {
    status_ = 1;
    angle = giAngle(giAngleRadians, full_turn);
    if (directions_.size() == 0) return 1;
    shuffle();
    exact_cone1(directions_[0], axis, angle);
    support_count_ = 1;
    support_[0] = 0;
    double excess = 0.0;
    for (int i = 1; i < directions_.size();) {
        giUnitVec3 const & direction = directions_.read(i);
        if (well_inside(direction, axis, angle) || in_support(i) || inside_cone(direction, axis, angle, excess)) {
            ++i;
            continue;
        }
        cone wider;
        update_support(i, wider.axis, wider.angle);
        if (!status_) return 0;
        if (wider.width() > radians(angle)) {
            axis = wider.axis;
            angle = wider.angle;
            i = 0;
        } else {
            ++i;
        }
    }
    return status_;
}

// The narrowest cone about three directions.
sqContainmentCone::cone sqContainmentCone::cone_about(giUnitVec3 a, giUnitVec3 b, giUnitVec3 c) {
    double const ab = radians(unsigned_angle(a, b)), ac = radians(unsigned_angle(a, c)),
                 bc = radians(unsigned_angle(b, c));
    if (ac > ab && ac > bc) {
        std::swap(b, c);
    } else if (bc > std::max(ab, ac)) {
        std::swap(a, c);
    }
    cone result;
    double excess = 0.0;
    exact_cone2(a, b, result.axis, result.angle);
    if (status_ && !result.contains(c, excess)) exact_cone3(a, b, c, result.axis, result.angle);
    return result;
}

// That of all directions but the three, and at least 0.
double sqContainmentCone::greatest_excess(cone const & candidate, int i, int j, int k) const {
    double worst = 0.0, excess = 0.0;
    for (int m = 0; m < directions_.size(); ++m) {
        if (m == i || m == j || m == k) continue;
        candidate.contains(directions_.read(m), excess);
        worst = std::max(worst, excess);
    }
    return worst;
}

int sqContainmentCone::solve_slow_and_simple_for_utest(giUnitVec3 & axis, giAngle & angle) {
    int const n = directions_.size();
    status_ = 1;
    angle = giAngle(giAngleRadians, full_turn);
    if (n == 1) exact_cone1(directions_[0], axis, angle);
    if (n == 2) exact_cone2(directions_[0], directions_[1], axis, angle);
    if (n <= 2) return status_;

    cone fallback;
    double least_worst = none;
    for (int i = 0; i < n; ++i) {
        for (int j = i + 1; j < n; ++j) {
            for (int k = j + 1; k < n; ++k) {
                cone const candidate = cone_about(directions_.read(i), directions_.read(j), directions_.read(k));
                if (!status_) return 0;
                double const worst = greatest_excess(candidate, i, j, k);
                if (worst < least_worst) {
                    least_worst = worst;
                    fallback = candidate;
                }
                if (worst < slack && candidate.width() < radians(angle)) {
                    axis = candidate.axis;
                    angle = candidate.angle;
                }
            }
        }
    }
    if (radians(angle) == full_turn) {
        if (least_worst > slack) status_ = 0;
        axis = fallback.axis;
        angle = fallback.angle;
    }
    return status_;
}
