#include <datumfit/direct/direct_circle3.h>

#include <datumfit/direct/direct_circle2.h>

#include <cmath>
#include <limits>

sqDirectCircle3::sqDirectCircle3(giPoint3coDynArr const & points) : sqDirectFit(points), input_(&points) {
    if (status_ == sqDirectFitUnfitted) fit();
}

void sqDirectCircle3::fit() {
    sqDirectCircle2 const flat(points_);
    status_ = flat.status();
    if (status_ != sqDirectFitSuccess) return;
    radius_ = flat.radius();
    centre_ = workplane_.to_world(flat.centre().xyz(0.0));
    workplane_.become(centre_, workplane_.v_vector(), workplane_.w_vector());
}

double sqDirectCircle3::chi() const {
    if (status_ != sqDirectFitSuccess) return std::numeric_limits<double>::max();
    giVector3 const & normal = workplane_.w_vector();
    double sum = 0.0;
    for (int i = 0; i < input_->size(); ++i) {
        giVector3 const v = (*input_)[i] - centre_;
        double const height = v.dot(normal);
        double const off = (v - height * normal).length() - radius_;
        sum += off * off + height * height;
    }
    return std::sqrt(sum / input_->size());
}
