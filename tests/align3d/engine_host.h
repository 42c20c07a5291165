#pragma once

#include "align3d/test_surfaces.h"

#include <datumfit/align3d/points_to_planes/points_to_planes.h>
#include <support/shapes.h>

#include <cfloat>
#include <functional>
#include <ostream>

namespace align3d_tests {

/// An engine whose state can be read.
struct engine_host : sqPointsToPlanes {
    using sqPointsToPlanes::balance_;
    using sqPointsToPlanes::bestfit_;
    using sqPointsToPlanes::has_bands_;
    using sqPointsToPlanes::locked_from_;
    using sqPointsToPlanes::positioning_;
    using sqPointsToPlanes::reserve_;
    using sqPointsToPlanes::rotation_scale_;
    using sqPointsToPlanes::shift_directions_;

    void add_unbanded(giPoint3 const & p, giPoint3 const & q, giVector3 const & n, double weight = 1.0) {
        add_bestfit(p, q, n, -DBL_MAX, DBL_MAX, weight);
    }
    numbers given_up() const { return numbers_in(overdetermined_constraints()); }
};

inline giXform3 const unity(giXformIdentity);
inline giXform3 const aside(giXformTranslate, giVector3(1.0, 2.0, 3.0));
inline giUnitVec3 const lock_axis(1.0, -2.0, 0.5);
inline giVector3 const nowhere(0.0, 0.0, 0.0);

struct small_motion {
    giVector3 shift, turn;
};

/// A form of the linear step, told as motions: that of each unknown, about the pivot, with the pivot on its nominal
/// place to begin with.
struct step_form {
    char const * name;
    int unknowns, positioning;
    giPoint3 pivot, nominal_pivot;
    std::function<small_motion(double scale, int unknown)> motion;
    std::function<void(engine_host &)> lock;
};

inline void PrintTo(step_form const & form, std::ostream * stream) {
    *stream << form.name;
}

inline std::vector<step_form> step_forms() {
    giPoint3 const origin(giOrigin), pivot(3.0, -1.0, 2.0), nominal(3.02, -1.01, 1.97);
    giUnitVec3 const d(1.0, 1.0, 3.0), across = d.any_normal();
    auto const shift = [](giVector3 const & v) { return small_motion{v, nowhere}; };
    auto const turn = [](giVector3 const & v) { return small_motion{nowhere, v}; };
    auto const ort = [](int k) { return giVector3(static_cast<gi_Axis>(k)); };
    auto const held = [=](int m) {
        return [=](double s, int k) {
            giVector3 orts[3];
            sqPointsToPlanes::linear_step_fixed_axis_orts(m, lock_axis, orts);
            return k == m - 1 ? turn(s * static_cast<giVector3 const &>(lock_axis)) : shift(orts[k]);
        };
    };
    auto const unlocked = [](engine_host &) {};
    auto const about_axis = [](engine_host & e) { e.lock_direction(lock_axis, lock_axis, 0); };
    auto const along_two = [=](engine_host & e) {
        e.lock_direction(giAxisX, giAxisY, 0);  // shifts go before
        e.lock_rotations(d, across, giVector3());
    };
    auto const freely = [=](double s, int k) { return k < 3 ? shift(ort(k)) : turn(s * ort(k - 3)); };
    return {{"free", 6, 0, origin, origin, freely, unlocked},
            {"axis", 4, 0, origin, origin, held(4), about_axis},
            {"plane", 3, 1, pivot, nominal, held(3), about_axis},
            {"line", 2, 2, pivot, nominal, held(2), about_axis},
            {"fixed", 1, 5, pivot, nominal, held(1), about_axis},
            {"point", 3, 3, pivot, nominal, [=](double, int k) { return turn(ort(k)); }, unlocked},
            {"shifts", 2, 1, origin, origin, [=](double, int k) { return shift(k == 0 ? d : across); }, along_two}};
}

/// Places points in general position, far from the origin as told, at what `to_nominal` makes their nominal places.
inline void add_records(engine_host & e, step_form const & form, giXform3 const & to_nominal, double offset = 0.0,
                        int n = 23) {
    noise random;
    form.lock(e);
    for (int i = 0; i < form.positioning; ++i) {
        // Only the first one's points and their number count.
        giVector3 const off = i * random.vector(1.0);
        e.add_positioning(form.pivot + off, form.nominal_pivot + 2.0 * off, giUnitVec3(random.vector(1.0)), 1);
    }
    for (int i = 0; i < n; ++i) {
        giPoint3 const p = general_point(offset) + random.vector(10.0);
        double const weight = (i % 3 == 1 ? -1.0 : 1.0) * (0.5 + 0.1 * (i % 7));
        e.add_unbanded(p, to_nominal * p, giUnitVec3(random.vector(1.0)), weight);
    }
}

/// Where the linearised motion of the unknowns x leaves a point, seen from the nominal pivot, relative to its plane
/// point.
inline giVector3 linear_offset(engine_host const & e, step_form const & form, sqPlaneAndPoint const & record,
                               double const * x) {
    giVector3 const u = record.point - form.pivot;
    giVector3 moved = u - (record.plane_point - form.nominal_pivot);
    for (int k = 0; k < form.unknowns; ++k) {
        small_motion const m = form.motion(e.rotation_scale_, k);
        moved += x[k] * (m.shift + m.turn.cross(u));
    }
    return moved;
}

}  // namespace align3d_tests
