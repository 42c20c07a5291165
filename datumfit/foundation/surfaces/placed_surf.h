#pragma once

#include <datumfit/foundation/surfaces/affine_placement.h>
#include <datumfit/foundation/surfaces/surf.h>
#include <datumfit/foundation/surfaces/surf_feet.h>

#include <cmath>
#include <limits>

namespace datumfit {
namespace internal {

/// A surface that is the image of a canonical shape under an affine map.
template <class Shape>
class placed_surf : public sknSurf {
public:
    /// 1 when the surface was made from bad input, or met a transform that is invalid or flattens it; else 0. An
    /// invalid surface has no feet and no normals, and stays so.
    int invalid() const { return placement_.invalid() ? 1 : 0; }

    /// Leaves feet out that are farther from the point than the nearest one by more than this length, in the unit of
    /// the coordinates; whatever the surface is transformed by later. None are left out at first, nor after a negative
    /// length or NaN. A host whose points may lie on the wrong side of the surface, as those of a part that is out of
    /// place do, is better off without the far wall.
    void set_reach(double length) { reach_ = length >= 0.0 ? length : std::numeric_limits<double>::infinity(); }

    /// Appends all places where the distance is stationary, within the bounds and the reach, the nearest first and each
    /// once. status is 1 also for a point that is invalid, not finite, or has a coordinate beyond 2^100.
    void project_point(giPoint3 const & point, sknSurfPointList & feet, int & status) const override {
        status = 1;
        double q[3];
        if (placement_.invalid() || !placement_.to_local(point, q)) return;
        surf_feet found(q);
        shape_.find_feet(placement_, q, placement_.rounding(point), found);
        int const before = feet.size();
        double const limit = found.size() > 0 ? std::sqrt(found[0].square) + reach_ / placement_.scale() : 0.0;
        for (int i = 0; i < found.size(); ++i) {
            surf_feet::foot const & f = found[i];
            if (std::sqrt(f.square) > limit) break;
            feet.append(sknSurfPoint{f.u, f.v, placement_.to_world(f.place)});
        }
        if (feet.size() > before) status = 0;
    }

    /// The exact normal, told by u and v alone, outward: it stays on its side of the surface under all transforms, also
    /// under reflections.
    giUnitVec3 normal_at(sknSurfPoint const & at, double, giAngle const &) const override {
        if (placement_.invalid()) return giUnitVec3();
        double g[3];
        shape_.gradient(at.u, at.v, g);
        return placement_.normal(g);
    }

protected:
    /// The canonical shape with its origin and its unit vectors taken there.
    placed_surf(Shape const & shape, giPoint3 const & origin, giVector3 const (&edges)[3])
        : shape_(shape), placement_(origin, edges, shape.third_edge_leads(edges)) {
        settle();
    }

    void apply(giXform3 const & x) override {
        if (placement_.invalid() || x.identity() || placement_.move_alike(x)) return;
        giVector3 const edges[] = {x * placement_.edge(0), x * placement_.edge(1), x * placement_.edge(2)};
        placement_ = affine_placement(x * placement_.origin(), edges, shape_.third_edge_leads(edges));
        settle();
    }

private:
    void settle() {
        if (!placement_.invalid() && !shape_.settle(placement_)) placement_ = affine_placement();
    }

    Shape shape_;
    affine_placement placement_;
    double reach_ = std::numeric_limits<double>::infinity();
};

}  // namespace internal
}  // namespace datumfit
