#pragma once

#include <datumfit/direct/direct_fit.h>

/// A circle through points in space: sqDirectCircle2 of their projections on their best plane. Two points give one in
/// an arbitrary plane through both.
class sqDirectCircle3 : public sqDirectFit {
public:
    /// The points are referred to as well, for chi(): they must outlive this then.
    explicit sqDirectCircle3(giPoint3coDynArr const & points);

    double radius() const { return radius_; }
    giPoint3 const & centre() const { return centre_; }

    /// The circle's plane, with the origin at its centre and w as the normal.
    giWorkplane3 const & workplane() const { return workplane_; }

    /// The root mean square distance of the points from the circle, in space; the largest double when there is none.
    double chi() const;

protected:
    void fit();

private:
    giPoint3coDynArr const * input_;
    double radius_ = 0.0;
    giPoint3 centre_;
};
