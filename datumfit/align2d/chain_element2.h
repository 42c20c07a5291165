#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>
#include <datumfit/foundation/geometry/point2.h>

/// An element of a nominal chain in the plane: a line segment or an arc, with a direction of travel.
///
/// An arc runs from the angle `from` through `sweep`, both in radians: counterclockwise for a positive sweep, clockwise
/// for a negative one. From a whole turn on it is the full circle.
class sqChainElement2 {
public:
    /// An element that is none.
    sqChainElement2() = default;

    static sqChainElement2 segment(giPoint2 const & start, giPoint2 const & end);
    static sqChainElement2 arc(giPoint2 const & centre, double radius, double from, double sweep);

    /// Whether it can't be part of a chain: a coordinate or an angle is not set or not finite, or the radius of an arc
    /// is not above 0.
    bool invalid() const;

    bool is_arc() const { return is_arc_; }
    giPoint2 const & start() const { return start_; }
    giPoint2 const & end() const { return end_; }

    /// Of an arc; for a segment they mean nothing.
    giPoint2 const & centre() const { return centre_; }
    double radius() const { return radius_; }
    double from() const { return from_; }
    double sweep() const { return sweep_; }

private:
    giPoint2 start_, end_, centre_;
    double radius_ = 0.0, from_ = 0.0, sweep_ = 0.0;
    bool is_arc_ = false;
};

using sqChainElement2coDynArr = coDynArr<sqChainElement2>;
