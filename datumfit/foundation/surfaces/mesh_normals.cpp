#include <datumfit/foundation/surfaces/mesh_feet.h>
#include <datumfit/foundation/surfaces/mesh_normals.h>

#include <algorithm>
#include <cmath>

namespace datumfit {
namespace internal {

namespace {

double angle_at(triangle_mesh const & mesh, int side) {
    giVector3 const a = mesh.along(side), b = -mesh.along(previous_side(side));
    return std::atan2(a.cross(b).length(), a.dot(b));
}

// Walks over smooth edges from corner to corner around a vertex.
class smooth_groups {
public:
    smooth_groups(triangle_mesh const & mesh, double crease_cosine, corner_normals & normals)
        : mesh_(mesh), crease_cosine_(crease_cosine), normals_(normals), sign_(normals.size(), 0.0) {}

    void add_group(int first_corner) {
        if (sign_.data()[first_corner] != 0.0) return;
        corners_.assign(1, first_corner);
        sign_.data()[first_corner] = 1.0;
        giVector3 sum(0.0, 0.0, 0.0);
        for (std::size_t i = 0; i < corners_.size(); ++i) {
            int const corner = corners_[i];
            sum += sign_.data()[corner] * angle_at(mesh_, corner) * mesh_.normal_beside(corner);
            step_over(corner, corner);
            step_over(corner, previous_side(corner));
        }
        set_normals(sum);
    }

private:
    // A triangle that goes round the other way counts with its normal reversed.
    void step_over(int corner, int side) {
        if (!is_smooth(mesh_, side, crease_cosine_)) return;
        int const other = mesh_.links.around(side), vertex = mesh_.from(corner);
        int const next = mesh_.from(other) == vertex ? other : next_side(other);
        if (sign_.data()[next] != 0.0) return;
        bool const reversed = mesh_.from(side) == mesh_.from(other);
        sign_.data()[next] = reversed ? -sign_.data()[corner] : sign_.data()[corner];
        corners_.push_back(next);
    }

    void set_normals(giVector3 const & sum) {
        giUnitVec3 const mean(sum);
        for (int const corner : corners_) {
            normals_.data()[corner] = mean.invalid()               ? mesh_.normal_beside(corner)
                                      : sign_.data()[corner] < 0.0 ? -mean
                                                                   : mean;
        }
    }

    triangle_mesh const & mesh_;
    double crease_cosine_;
    corner_normals & normals_;
    std::vector<double> sign_;
    std::vector<int> corners_;
};

}  // namespace

corner_normals mean_normals(triangle_mesh const & mesh, double crease_cosine) {
    corner_normals normals(3 * mesh.corners.size());
    smooth_groups groups(mesh, crease_cosine, normals);
    for (int corner = 0; corner < static_cast<int>(normals.size()); ++corner) {
        if (!mesh.is_left_out(corner / 3)) groups.add_group(corner);
    }
    return normals;
}

giUnitVec3 interpolated_normal(triangle_mesh const & mesh, corner_normals const & normals, int triangle,
                               giPoint3 const & place) {
    giVector3 sum(0.0, 0.0, 0.0);
    for (int corner = 3 * triangle; corner < 3 * triangle + 3; ++corner) {
        // Twice the area over the side that lies opposite.
        int const opposite = next_side(corner);
        double const area = mesh.normals.data()[triangle].dot(mesh.along(opposite).cross(place - mesh.start(opposite)));
        sum += std::max(area, 0.0) * normals.data()[corner];
    }
    giUnitVec3 const n(sum);
    return n.invalid() ? mesh.normals.data()[triangle] : n;
}

}  // namespace internal
}  // namespace datumfit
