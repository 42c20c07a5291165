#include <datumfit/curved/cylinder/random_cylinders.h>

#include <datumfit/curved/best_first.h>
#include <datumfit/foundation/maths/random.h>

#include <limits>

namespace datumfit {
namespace internal {

namespace {
constexpr double unfit = std::numeric_limits<double>::infinity();
}  // namespace

random_cylinders::random_cylinders(probe_set const & set) : circles_(set), candidates_(batches * batch_size) {
    order_.reserve(batch_size);
    mlRandom random(1);
    for (candidate & c : candidates_) {
        double const x = 2.0 * random.zero_one() - 1.0;
        double const y = 2.0 * random.zero_one() - 1.0;
        double const z = 0.9999999 * random.zero_one() + 1e-7;
        c.axis = giUnitVec3(x, y, z);
        c.bound = circles_.bound(c.axis);
    }
}

random_cylinders::candidate const & random_cylinders::fitted(int i) {
    candidate & c = candidates_[static_cast<std::size_t>(i)];
    if (!c.fitted) {
        c.fitted = true;
        c.sum = circles_.fit(c.axis) ? circles_.sum_of_squares() : unfit;
        c.centre = circles_.centre();
        c.radius = circles_.radius();
    }
    return c;
}

bool random_cylinders::best_of_order(mlVector & cylinder) {
    double best = unfit;
    int const winner = least_scored(
        order_, [&](int i) { return candidates_[static_cast<std::size_t>(i)].bound; },
        [&](int i) { return fitted(i).sum; }, best);
    if (winner < 0) return false;
    candidate const & c = candidates_[static_cast<std::size_t>(winner)];
    double const found[] = {c.centre.x(), c.centre.y(), c.centre.z(), c.axis.x(), c.axis.y(), c.axis.z(), c.radius};
    cylinder.become(utConvert, found, 7);
    return true;
}

}  // namespace internal
}  // namespace datumfit
