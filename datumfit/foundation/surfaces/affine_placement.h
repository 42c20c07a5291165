#pragma once

#include <datumfit/foundation/geometry/point3.h>
#include <datumfit/foundation/geometry/unit_vec3.h>
#include <datumfit/foundation/geometry/xform3.h>

#include <cmath>

namespace datumfit {
namespace internal {

struct matrix3 {
    double rows[3][3] = {};

    void times(double const (&v)[3], double (&result)[3]) const {
        for (int r = 0; r < 3; ++r) result[r] = rows[r][0] * v[0] + rows[r][1] * v[1] + rows[r][2] * v[2];
    }
    void transposed_times(double const (&v)[3], double (&result)[3]) const {
        for (int c = 0; c < 3; ++c) result[c] = rows[0][c] * v[0] + rows[1][c] * v[1] + rows[2][c] * v[2];
    }
};

/// Where a canonical shape lies, by an affine map in three steps: stretch, into local coordinates y = S x, then scale,
/// and then a rigid motion or reflection.
///
/// Similarity transforms change the last two alone. So what a shape knows about its stretched form stays as it is, to
/// the last bit, however often the surface is moved about.
class affine_placement {
public:
    /// An invalid one, as is the result of whatever can't be placed: origin and edges that are not finite, coordinates
    /// and sizes beyond 2^100 and sizes below 2^-100, and edges that lie in a plane to rounding.
    affine_placement() = default;

    /// The map that takes the canonical origin to `origin` and the canonical unit vectors to the edges. The third local
    /// axis is across the first two edges, or when the third edge leads, the first axis is along that.
    affine_placement(giPoint3 const & origin, giVector3 const (&edges)[3], bool third_edge_leads);

    bool invalid() const { return !valid_; }

    /// Moves all by a similarity transform, or returns false if x is none.
    bool move_alike(giXform3 const & x);

    /// Turns the local coordinates, so that y becomes E^T y for an orthogonal E.
    void turn(matrix3 const & E);

    /// S, and its inverse.
    matrix3 const & stretch() const { return stretch_; }
    matrix3 const & unstretch() const { return unstretch_; }

    /// The length of 1 in local coordinates.
    double scale() const { return scale_; }

    /// The local coordinates of a point; false if it is invalid or has a coordinate beyond 2^100.
    bool to_local(giPoint3 const & p, double (&y)[3]) const {
        if (!(std::abs(p.x()) <= greatest && std::abs(p.y()) <= greatest && std::abs(p.z()) <= greatest)) return false;
        double const d[] = {over_scale_ * (p.x() - origin_[0]), over_scale_ * (p.y() - origin_[1]),
                            over_scale_ * (p.z() - origin_[2])};
        axes_.times(d, y);
        return true;
    }
    giPoint3 to_world(double const (&y)[3]) const {
        double d[3];
        axes_.transposed_times(y, d);
        return giPoint3(origin_[0] + scale_ * d[0], origin_[1] + scale_ * d[1], origin_[2] + scale_ * d[2]);
    }

    /// How far rounding of its coordinates, and of those of the origin, may put a point off, in local coordinates.
    double rounding(giPoint3 const & p) const {
        constexpr double share = 0x1p-48;
        return share * over_scale_ * (reach_ + std::abs(p.x()) + std::abs(p.y()) + std::abs(p.z()));
    }

    /// The direction of a canonical gradient: what is at right angles to a surface stays so, on the same side of it.
    giUnitVec3 normal(double const (&gradient)[3]) const;

    /// The canonical origin and the canonical unit vectors as they lie now.
    giPoint3 origin() const { return giPoint3(origin_[0], origin_[1], origin_[2]); }
    giVector3 edge(int k) const;

private:
    static constexpr double greatest = 0x1p+100, least = 0x1p-100;

    bool finish(double scale);

    double origin_[3] = {};
    matrix3 axes_;  // rows: the directions of the local axes
    double scale_ = 1.0, over_scale_ = 1.0;
    matrix3 stretch_, unstretch_;
    double reach_ = 0.0;  // of the origin
    bool valid_ = false;
};

}  // namespace internal
}  // namespace datumfit
