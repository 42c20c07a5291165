#pragma once

#include <datumfit/foundation/geometry/point2.h>
#include <datumfit/foundation/geometry/point3.h>

#include <cmath>

class giXform2;
class giXform3;

/// Carries the second point of each pair onto the first one, by the rotation and shift of the least sum of squared
/// distances: no scale, no reflection. All pairs count alike.
///
/// Pairs are summed as they come, block by block, and no further memory is used. What is summed are the coordinates as
/// seen from the first pair, so that places far from the origin cost no digits.
///
/// The rotation is that of the singular value decomposition of the centred moments: Arun, Huang & Blostein 1987, IEEE
/// Trans. Pattern Anal. Mach. Intell. 9(5), 698; with a reflection put right as by Umeyama 1991, ibid. 13(4), 376.
///
/// To use it: add pairs, then get_xform() once; after that the object is used up. It belongs to one thread at a time.
class sqPointsToPoints {
public:
    sqPointsToPoints() = default;
    ~sqPointsToPoints() = default;

    /// Adds a pair; none when a point is invalid. The first pair decides whether the object works in the plane or in
    /// space, and pairs of the other kind are left out.
    void add_pair(giPoint2 const & first, giPoint2 const & second) {
        double const a[] = {first.x(), first.y()}, b[] = {second.x(), second.y()};
        if (are_small(a, b) || !(first.invalid() || second.invalid())) take<2>(a, b);
    }
    void add_pair(giPoint3 const & first, giPoint3 const & second) {
        double const a[] = {first.x(), first.y(), first.z()}, b[] = {second.x(), second.y(), second.z()};
        if (are_small(a, b) || !(first.invalid() || second.invalid())) take<3>(a, b);
    }

    /// Gives the transform from second to first points: a proper rotation and a shift, also when the pairs are mirror
    /// images.
    ///
    /// @return true; false when the points lie on a line, or nearly, as two always do: in space the turn about it is
    ///         then arbitrary, in the plane the transform is right all the same. One pair alone gives true. False with
    ///         the transform as it was when there are no pairs, or only pairs of the other kind
    bool get_xform(giXform2 & transform);
    bool get_xform(giXform3 & transform);

protected:
    /// Adds the coordinates, as many as the dimension says.
    void add_pair(double const * first, double const * second) {
        if (dimension_ == 3) {
            add<3>(first, second);
        } else {
            add<2>(first, second);
        }
    }

    /// Zeroes what is summed.
    void initialise_matrix();

private:
    static constexpr int block_size = 128;  // a power of two

    // Whether no coordinate is near the one that marks an invalid point: one comparison for all.
    template <int d>
    static bool are_small(double const (&a)[d], double const (&b)[d]) {
        double sum = 0.0;
        for (int i = 0; i < d; ++i) sum += std::abs(a[i]) + std::abs(b[i]);
        return sum < 1e300;
    }

    template <int d>
    void take(double const (&first)[d], double const (&second)[d]) {
        if (dimension_ == 0) dimension_ = d;
        if (dimension_ == d) add<d>(first, second);
    }

    template <int d>
    void add(double const * first, double const * second) {
        if (count_ == 0) begin(first, second);
        double * const pair = waiting_ + 2 * d * (count_ & (block_size - 1));
        for (int i = 0; i < d; ++i) {
            pair[i] = first[i] - origin_first_[i];
            pair[d + i] = second[i] - origin_second_[i];
        }
        if ((++count_ & (block_size - 1)) == 0) sum_up(block_size);
    }

    void begin(double const * first, double const * second);
    void sum_up(int pairs);
    template <int d>
    void sum_up_in(int pairs);
    template <int d>
    bool solve(double (&w)[d][d], double (&origin)[d]);

    double waiting_[2 * 3 * block_size];  // pairs of a block that is not summed up yet, as seen from the first pair
    double moments_[9];  // number dimension * j + i: of coordinate i of the first and j of the second points
    double sum_first_[3], sum_second_[3];
    double origin_first_[3], origin_second_[3];  // the first pair
    int count_ = 0;
    int dimension_ = 0;
};
