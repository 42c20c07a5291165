#pragma once

#include <datumfit/foundation/surfaces/box_tree.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace datumfit {
namespace internal {

/// Places count that are farther from a point than the nearest by up to the distance of that, but by `least` in any
/// case and by `most` at most.
struct search_reach {
    double least, most;

    double squared(double nearest_square) const {
        // Places at the nearest one's distance count whatever the rounding of squares.
        constexpr double rounding_up = 1.0 + 0x1p-40;
        double const nearest = std::sqrt(nearest_square);
        double const reach = rounding_up * (nearest + std::min(std::max(nearest, least), most));
        return reach * reach;
    }
};

struct triangle_hit {
    double square;  ///< of the distance from the point
    int number;
};

/// The triangle nearest to a point, and all within reach that may hold a place which is nearest in its neighbourhood.
struct search_result {
    static constexpr int most_hits = 64;

    triangle_hit nearest;
    double limit;  ///< the square of the reach
    std::array<triangle_hit, most_hits> hits;
    int count;
    bool complete;  ///< false when there are more hits than have a place
};

/// The tree has a node.
void search(box_tree const & tree, giPoint3 const & point, search_reach const & reach, search_result & result);

class hit_visitor {
public:
    virtual void visit(triangle_hit const & hit) = 0;

protected:
    ~hit_visitor() = default;
};

/// Visits the hits up to a squared distance, however many there are.
void visit_within(box_tree const & tree, giPoint3 const & point, double limit, hit_visitor & visitor);

}  // namespace internal
}  // namespace datumfit
