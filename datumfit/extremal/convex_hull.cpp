#include <datumfit/extremal/convex_hull.h>

#include <datumfit/extremal/simplest_closed_path.h>
#include <datumfit/extremal/turn_test.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

using namespace datumfit::internal;

namespace {

constexpr double same_point = 1e-12;

// From this number on it pays to put inner points aside, and to deal the others out before they are sorted.
constexpr int many_points = 100;

// Points that come this near to the octagon, relative to its size, are not put aside: its sides are rounded.
constexpr double safe_depth = 1e-9;

// Which of two neighbours in the sort the next point is compared with: the last that was kept, or the last of all.
enum predecessor { last_kept, last_sorted };

// A point that may be a corner, with its direction from the pivot: all that the sort and the scan look at.
struct candidate {
    double angle, x, y;
    int index;

    giPoint2 point() const { return giPoint2(x, y); }
};
using candidates = coDynArr<candidate>;

// The octagon through the points that are extreme along the axes and the diagonals, counterclockwise from below.
class octagon {
public:
    explicit octagon(giPoint2coDynArr const & points) : origin_(points[0]) {
        giPoint2 corners[8];
        find_extremes(points, corners);
        double const size = std::max(corners[4].y() - corners[0].y(), corners[2].x() - corners[6].x());
        double const depth = std::max(safe_depth * size, 2.0 * same_point);
        for (int k = 0; k < 8; ++k) {
            giVector2 const along = corners[(k + 1) % 8] - corners[k];
            double const length = std::sqrt(along.dot(along));
            if (!(length > 0.0)) continue;  // both its ends are one point
            giVector2 const inward = along.orthogonal();
            sides_[count_++] = {inward.x(), inward.y(), inward.dot(corners[k] - origin_) + depth * length};
        }
    }

    bool holds_deep(giPoint2 const & p) const {
        double const x = p.x() - origin_.x(), y = p.y() - origin_.y();
        for (int k = 0; k < count_; ++k) {
            if (!(sides_[k].x * x + sides_[k].y * y > sides_[k].least)) return false;
        }
        return count_ > 2;
    }

private:
    struct side {
        double x, y, least;  // the inward normal times the length, and what it takes to be inside
    };

    static void find_extremes(giPoint2coDynArr const & points, giPoint2 (&corners)[8]) {
        double greatest[8];
        std::fill(greatest, greatest + 8, -std::numeric_limits<double>::infinity());
        int at[8] = {};
        giPoint2 const origin = points[0];
        for (int i = 0; i < points.size(); ++i) {
            double const x = points[i].x() - origin.x(), y = points[i].y() - origin.y();
            double const reach[] = {-y, x - y, x, x + y, y, y - x, -x, -x - y};
            for (int k = 0; k < 8; ++k) {
                if (reach[k] > greatest[k]) {
                    greatest[k] = reach[k];
                    at[k] = i;
                }
            }
        }
        for (int k = 0; k < 8; ++k) corners[k] = points[at[k]];
    }

    giPoint2 origin_;
    side sides_[8];
    int count_ = 0;
};

// The points, or those of them that are not deep within an octagon. Without memory there are none.
void gather(giPoint2coDynArr const & points, giPoint2 const & pivot, octagon const * inner, candidates & result) {
    result.clear(0);
    result.reserve(points.size());  // memory that is not written to costs nothing
    for (int i = 0; i < points.size(); ++i) {
        if (inner && inner->holds_deep(points[i])) continue;
        double const angle = pseudo_angle(pivot, points[i]);
        // A NaN has no place in an order.
        result.append({std::isnan(angle) ? 360.0 : angle, points[i].x(), points[i].y(), i});
    }
}

// Deals the points out over equal sectors of the half turn above the pivot, and gives where each sector ends.
bool deal_out(candidates & list, intcoDynArr & ends) {
    int const sectors = list.size() / 8 + 1;
    candidates dealt;
    if (!ends.expand(sectors) || !dealt.expand(list.size())) return false;
    std::fill(ends.data(), ends.data() + sectors, 0);
    auto const sector = [&](double angle) { return static_cast<int>(std::min(angle / 180.0, 1.0) * (sectors - 1)); };
    for (int i = 0; i < list.size(); ++i) ++ends.data()[sector(list.data()[i].angle)];
    int begin = 0;
    for (int k = 0; k < sectors; ++k) begin += std::exchange(ends.data()[k], begin);
    for (int i = 0; i < list.size(); ++i) {
        candidate const & c = list.data()[i];
        dealt.data()[ends.data()[sector(c.angle)]++] = c;
    }
    list = std::move(dealt);
    return true;
}

// Into the order of a simple closed path about the pivot, which is the first of the points equal to it; of equal points
// the one of the lowest index first.
void sort(giPoint2 const & pivot, candidates & list) {
    auto const square = [&](candidate const & c) {
        giVector2 const v = c.point() - pivot;
        double const result = v.dot(v);
        return std::isnan(result) ? std::numeric_limits<double>::infinity() : result;
    };
    auto const before = [&](candidate const & a, candidate const & b) {
        if (a.angle != b.angle) return a.angle < b.angle;
        double const from_a = square(a), from_b = square(b);
        return from_a != from_b ? from_a < from_b : a.index < b.index;
    };
    intcoDynArr ends;
    if (list.size() >= many_points) deal_out(list, ends);
    candidate * begin = list.data();
    for (int k = 0; k < ends.size(); ++k) {
        candidate * const end = list.data() + ends[k];
        std::sort(begin, end, before);
        begin = end;
    }
    std::sort(begin, list.data() + list.size(), before);  // all, where they were not dealt out
}

// Drops each point that is one with the point before it. Gives whether all dropped ones were equal to it.
bool drop_repeated(candidates & list, predecessor with) {
    bool all_equal = true;
    int kept = 0;
    giPoint2 before;  // not set, so no point is one with it
    for (int i = 0; i < list.size(); ++i) {
        giPoint2 const p = list[i].point();
        bool const repeated = p.coincident(before, same_point);
        if (!repeated) {
            list[kept++] = list[i];
        } else if (!p.coincident(before, 0.0)) {
            all_equal = false;
        }
        if (!repeated || with == last_sorted) before = p;
    }
    list.shrink(kept, 0);
    return all_equal;
}

// Graham's scan: the point on top goes while the path turns right at it, or back.
void scan(candidates & list) {
    int const m = list.size();
    auto const straight_or_left = [&](int top, int next) {
        int const below = top > 0 ? top - 1 : m - 1;
        return turn_test(list[top].point(), list[below].point(), list[next].point(), 0.0) < 0;
    };
    int top = 2;
    for (int next = 3; next < m; ++next) {
        while (top >= 0 && !straight_or_left(top, next)) --top;
        list[++top] = list[next];
    }
    list.shrink(top + 1, 0);
}

void find_hull(giPoint2coDynArr const & points, predecessor with, candidates & hull) {
    giPoint2 const pivot = points[lowest_point_index(points.data(), points.size())];
    bool exact = false;
    if (points.size() >= many_points) {
        octagon const inner(points);
        gather(points, pivot, &inner, hull);
        sort(pivot, hull);
        // What neighbours all but coincide may depend on the points between them that were put aside.
        exact = drop_repeated(hull, with);
    }
    if (!exact) {
        gather(points, pivot, nullptr, hull);
        sort(pivot, hull);
        drop_repeated(hull, with);
    }
    if (hull.size() >= 4) scan(hull);
}

}  // namespace

void sq_calculate_convex_hull(giPoint2coDynArr const & points, giPoint2coDynArr & hull) {
    if (points.size() == 0) return;
    candidates found;
    find_hull(points, last_kept, found);
    hull.clear(0);
    hull.reserve(found.size());
    for (int i = 0; i < found.size(); ++i) hull.append(found[i].point());
}

void sq_calculate_convex_hull(giPoint2coDynArr const & points, intcoDynArr & indices) {
    if (points.size() == 0) return;
    candidates found;
    find_hull(points, last_sorted, found);
    indices.reserve(indices.size() + found.size());
    for (int i = 0; i < found.size(); ++i) indices.append(found[i].index);
}
