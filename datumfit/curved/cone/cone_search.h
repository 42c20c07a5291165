#pragma once

#include <datumfit/curved/cone/cone_guess_generator.h>
#include <datumfit/curved/cone/least_square_cone_results.h>

namespace datumfit {
namespace internal {

/// A search for one cone: passes of guesses, each refined by the solver.
class cone_search {
public:
    /// What differs between points on the surface and probe centres.
    struct ways {
        bool flat_guess;         // whether nearly flat cones are guessed
        bool stop_at_any_guess;  // whether a good solution ends a pass behind any guess, or only the random ones
        bool refine;             // whether the best solution is refined at the end
        double non_physical_tolerance;
    };

    /// A problem on the points, and the points of which guesses are made; all are referred to.
    cone_search(sqLeastSquareCone & problem, giPoint3coDynArr const & points, giPoint3coDynArr const & guess_points,
                giUnitVec3 const & preferred_dir, giAngle const & dir_limit, giUnitVec3coDynArr const & normals,
                ways const & w);

    /// Writes the best solution and its mean square; the largest double when there is none.
    void run(double & square, mlVector & parameters);

private:
    void try_pass(giUnitVec3 const & centre, giAngle const & angle, bool first);
    bool good_enough() const;
    void solve(mlVector const & start, bool to_the_last_digit);

    sqLeastSquareCone & problem_;
    giPoint3coDynArr const & points_;
    giPoint3coDynArr const & guess_points_;
    giUnitVec3 const & preferred_dir_;
    giAngle const & dir_limit_;
    giUnitVec3coDynArr const & normals_;
    ways ways_;
    double range_;
    sqLeastSquareConeResults results_;
    mlVector found_;
};

}  // namespace internal
}  // namespace datumfit
