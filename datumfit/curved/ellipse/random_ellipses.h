#pragma once

#include <datumfit/curved/ellipse/least_square_ellipse.h>
#include <datumfit/foundation/maths/random.h>
#include <datumfit/foundation/maths/vector.h>

#include <vector>

namespace datumfit {
namespace internal {

/// Batches of random ellipses about the centroid of the points, from the greatest extent of the points down to a
/// hundredth of it, the same for the same points on every call.
///
/// Points farther from the centre than the long axis lie outside by at least the difference, those nearer than the
/// short axis inside. What that makes of the sum of squares is found from sorted distances without a look at each
/// point; in the order of it, few ellipses need be scored until no other one of a batch can win.
class random_ellipses {
public:
    static constexpr int batch_size = 100;

    /// The problem's points, which must outlive this.
    random_ellipses(sqLeastSquareEllipse & problem, giPoint2coDynArr const & points);

    /// Draws the next batch and writes the parameters of its ellipse with the least sum of squares, the first one of
    /// equals. Nothing is written when none has a finite sum.
    void best_of_next_batch(mlVector & ellipse);

    /// How many ellipses were scored up to now.
    long scored() const { return scored_; }

private:
    struct candidate {
        double a, b, angle, bound;
    };

    double bound(double longer, double shorter) const;
    double score(candidate const & c);
    void write(candidate const & c, mlVector & p) const;

    sqLeastSquareEllipse & problem_;
    double range_;
    giPoint2 centre_;
    mlRandom random_{1};
    std::vector<double> distance_;      // of the points from the centre, in ascending order,
    std::vector<double> sum_, square_;  // and the sums of so many of them and of their squares
    std::vector<candidate> batch_;
    std::vector<int> order_;
    mlVector parameters_;
    double best_ = 0.0;
    long scored_ = 0;
};

}  // namespace internal
}  // namespace datumfit
