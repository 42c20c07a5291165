#include <datumfit/direct/direct_ellipse3.h>

#include <datumfit/direct/direct_ellipse2.h>
#include <datumfit/direct/radial_square.h>

#include <cmath>
#include <limits>

sqDirectEllipse3::sqDirectEllipse3(giPoint3coDynArr const & points) : sqDirectFit(points), input_(&points) {
    if (status_ == sqDirectFitUnfitted) fit();
}

void sqDirectEllipse3::fit() {
    sqDirectEllipse2 const flat(points_);
    status_ = flat.status();
    if (status_ != sqDirectFitSuccess) return;
    a_length_ = flat.a_length();
    b_length_ = flat.b_length();
    centre_ = workplane_.to_world(flat.centre().xyz(0.0));
    a_axis_ = workplane_.to_world(flat.a_axis().xyz(0.0));
    b_axis_ = workplane_.to_world(flat.b_axis().xyz(0.0));
    workplane_.become(centre_, b_axis_, workplane_.w_vector());
}

double sqDirectEllipse3::chi() const {
    if (status_ != sqDirectFitSuccess) return std::numeric_limits<double>::max();
    double sum = 0.0;
    for (int i = 0; i < input_->size(); ++i) {
        giPoint3 const p = workplane_.to_work((*input_)[i]);
        sum += datumfit::internal::radial_square(a_length_, b_length_, p.x(), p.y(), tolerance_) + p.z() * p.z();
    }
    return std::sqrt(sum / input_->size());
}
