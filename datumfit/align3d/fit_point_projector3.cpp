#include <datumfit/align3d/fit_point_projector3.h>

sqFitPointProjector3::~sqFitPointProjector3() = default;

void sqFitPointProjector3::project_batch(std::function<sqFitPoint3 const &(int)> const & point,
                                         std::function<sqProjectedPoint3 &(int)> const & result, int count, int initial,
                                         giXform3 const & x) const {
    for (int i = 0; i < count; ++i) {
        sqFitPoint3 const & p = point(i);
        sqProjectedPoint3 & r = result(i);
        if (initial) {
            p.initial_projection(r, this);
        } else {
            p.project_from_position(x, r, this);
        }
    }
}
