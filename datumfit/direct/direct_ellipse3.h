#pragma once

#include <datumfit/direct/direct_fit.h>

/// An ellipse through points in space: sqDirectEllipse2 of their projections on their best plane.
class sqDirectEllipse3 : public sqDirectFit {
public:
    /// The points are referred to as well, for chi(): they must outlive this then.
    explicit sqDirectEllipse3(giPoint3coDynArr const & points);

    giPoint3 const & centre() const { return centre_; }

    /// The semi-axes, of which a is not the shorter one, and their directions, in either sense.
    double a_length() const { return a_length_; }
    double b_length() const { return b_length_; }
    giVector3 const & a_axis() const { return a_axis_; }
    giVector3 const & b_axis() const { return b_axis_; }

    /// The ellipse's plane, with the origin at its centre, u along a_axis(), v as b_axis() and w as the normal.
    giWorkplane3 const & workplane() const { return workplane_; }

    /// The root mean square distance of the points from the ellipse, of their heights and their distances along the
    /// rays from the centre; the largest double when there is none.
    double chi() const;

protected:
    void fit();

private:
    giPoint3coDynArr const * input_;
    giPoint3 centre_;
    double a_length_ = 0.0, b_length_ = 0.0;
    giVector3 a_axis_, b_axis_;
};
