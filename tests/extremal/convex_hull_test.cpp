#include <datumfit/extremal/convex_hull.h>
#include <datumfit/extremal/simplest_closed_path.h>
#include <datumfit/extremal/turn_test.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <utility>
#include <vector>

using datumfit::internal::turn_test;
using corner_list = std::vector<std::pair<double, double>>;

namespace {

corner_list corners(giPoint2coDynArr const & points) {
    corner_list result;
    for (int i = 0; i < points.size(); ++i) result.emplace_back(points[i].x(), points[i].y());
    return result;
}

corner_list hull_of(giPoint2coDynArr const & points) {
    giPoint2coDynArr hull;
    sq_calculate_convex_hull(points, hull);
    return corners(hull);
}

corner_list hull_by_index(giPoint2coDynArr const & points) {
    intcoDynArr indices;
    sq_calculate_convex_hull(points, indices);
    corner_list result;
    for (int i = 0; i < indices.size(); ++i) {
        result.emplace_back(points[indices[i]].x(), points[indices[i]].y());
    }
    return result;
}

// The steps one by one, with the sort object and without putting any point aside.
corner_list hull_by_steps(giPoint2coDynArr const & points) {
    giPoint2coDynArr h(points);
    std::swap(h[0], h[datumfit::internal::lowest_point_index(h.data(), h.size())]);
    sqCompareForSimplestClosedPath(h[0]).sort(h.data() + 1, h.size() - 1);
    int n = 1;
    for (int i = 1; i < h.size(); ++i) {
        if (!h[i].coincident(h[n - 1], 1e-12)) h[n++] = h[i];
    }
    if (n >= 4) {
        int top = 2;
        for (int k = 3; k < n; ++k) {
            while (top >= 0 && turn_test(h[top], h[(top + n - 1) % n], h[k], 0.0) >= 0) --top;
            h[++top] = h[k];
        }
        n = top + 1;
    }
    h.shrink(n, 0);
    return corners(h);
}

long long cross(giPoint2 const & a, giPoint2 const & b, giPoint2 const & c) {
    auto const whole = [](double x) { return static_cast<long long>(x); };
    return whole(b.x() - a.x()) * whole(c.y() - a.y()) - whole(b.y() - a.y()) * whole(c.x() - a.x());
}

// Of whole coordinates, the ends of the segments that have all points on their left or between their ends.
std::set<std::pair<double, double>> strict_corners(giPoint2coDynArr const & points) {
    std::set<std::pair<double, double>> result;
    for (int i = 0; i < points.size(); ++i) {
        for (int j = 0; j < points.size(); ++j) {
            bool edge = !points[i].coincident(points[j], 0.0);
            for (int k = 0; edge && k < points.size(); ++k) {
                long long const side = cross(points[i], points[j], points[k]);
                giVector2 const u = points[j] - points[i], v = points[k] - points[i];
                edge = side > 0 || (side == 0 && u.dot(v) >= 0.0 && u.dot(v) <= u.dot(u));
            }
            if (!edge) continue;
            result.insert({points[i].x(), points[i].y()});
            result.insert({points[j].x(), points[j].y()});
        }
    }
    return result;
}

giPoint2coDynArr random_points(int n, int seed, double (*place)(std::mt19937 &)) {
    std::mt19937 engine(static_cast<unsigned>(seed));
    giPoint2coDynArr points(n, 1);
    for (int i = 0; i < n; ++i) {
        double const x = place(engine);
        points.append(giPoint2(x, place(engine)));
    }
    return points;
}
double coarse(std::mt19937 & engine) {
    return static_cast<double>(engine() % 13);
}
double fine(std::mt19937 & engine) {
    return static_cast<double>(engine()) / 1e9 + 100.0;
}
double crowded(std::mt19937 & engine) {  // with neighbours that all but coincide
    return static_cast<double>(engine() % 7) + 4e-13 * static_cast<double>(engine() % 3);
}

}  // namespace

TEST(ConvexHull, HoldsTheCornersOfPointsOnALattice) {
    for (int seed = 0; seed < 300; ++seed) {
        giPoint2coDynArr const points = random_points(3 + seed % 40, seed, coarse);
        corner_list const hull = hull_of(points);
        SCOPED_TRACE(seed);
        EXPECT_EQ(hull, hull_by_index(points));
        std::set<std::pair<double, double>> const found(hull.begin(), hull.end());
        EXPECT_EQ(hull.size(), found.size()) << "a corner came twice";
        auto const strict = strict_corners(points);
        EXPECT_TRUE(std::includes(found.begin(), found.end(), strict.begin(), strict.end()));
        for (auto const & [x, y] : hull) {  // none is inside, and they go round
            for (std::size_t k = 0; hull.size() > 3 && k < hull.size(); ++k) {
                auto const & a = hull[k];
                auto const & b = hull[(k + 1) % hull.size()];
                EXPECT_GE(cross(giPoint2(a.first, a.second), giPoint2(b.first, b.second), giPoint2(x, y)), 0);
            }
        }
    }
}

TEST(ConvexHull, IsThatOfTheStepsWhateverIsPutAside) {
    for (auto const place : {coarse, fine, crowded}) {
        for (int n : {1, 2, 3, 4, 99, 100, 101, 3000}) {
            giPoint2coDynArr const points = random_points(n, n, place);
            EXPECT_EQ(hull_by_steps(points), hull_of(points)) << n;
            if (place != crowded) {
                EXPECT_EQ(hull_of(points), hull_by_index(points)) << n;
            }
        }
    }
}

TEST(ConvexHull, KeepsPointsOnALineAndTheLowestRightFirst) {
    giPoint2coDynArr const line{giPoint2(2, 4), giPoint2(0, 0), giPoint2(3, 6), giPoint2(1, 2), giPoint2(1, 2)};
    EXPECT_EQ((corner_list{{0, 0}, {1, 2}, {2, 4}, {3, 6}}), hull_of(line));
    giPoint2coDynArr const three{giPoint2(2, 0), giPoint2(1, 0), giPoint2(0, 0)};
    EXPECT_EQ((corner_list{{2, 0}, {1, 0}, {0, 0}}), hull_of(three));
    giPoint2coDynArr square{giPoint2(0, 0), giPoint2(1, 0), giPoint2(.4, .5), giPoint2(1, 1), giPoint2(0, 1)};
    corner_list const expected{{1, 0}, {1, 1}, {0, 1}, {0, 0}};
    EXPECT_EQ(expected, hull_of(square));
    intcoDynArr indices{7};
    sq_calculate_convex_hull(square, indices);
    ASSERT_EQ(5, indices.size());
    EXPECT_EQ(7, indices[0]);
    sq_calculate_convex_hull(square, square);
    EXPECT_EQ(expected, corners(square));
    sq_calculate_convex_hull(giPoint2coDynArr(), square);
    EXPECT_EQ(expected, corners(square));
    EXPECT_EQ(1u, hull_of(giPoint2coDynArr{giPoint2(1, 1), giPoint2(1, 1 + 9e-13)}).size());
    EXPECT_EQ(2u, hull_of(giPoint2coDynArr{giPoint2(1, 1), giPoint2(1, 1 + 2e-12)}).size());
}

TEST(SimplestClosedPath, OrdersByDirectionThenDistance) {
    using datumfit::internal::pseudo_angle;
    giPoint2 const o(3, -2);
    double const steps[][2] = {{1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}, {-1, -1}, {0, -1}, {1, -1}};
    for (int k = 0; k < 8; ++k) EXPECT_EQ(45.0 * k, pseudo_angle(o, o + giVector2(steps[k][0], steps[k][1])));
    EXPECT_EQ(0.0, pseudo_angle(o, o));
    EXPECT_GT(pseudo_angle(o, o + giVector2(2, 1)), 0.0);
    EXPECT_LT(pseudo_angle(o, o + giVector2(2, 1)), 45.0);
    sqCompareForSimplestClosedPath const order(o);
    giPoint2 const near = o + giVector2(2, 1), far = o + giVector2(4, 2), left = o + giVector2(1, 2);
    EXPECT_EQ(-1, order.compare(&near, &far));
    EXPECT_EQ(1, order.compare(&left, &far));
    EXPECT_EQ(0, order.compare(&far, &far));
}

TEST(SimplestClosedPath, SortsAMillionPointsInAnyOrder) {
    giPoint2coDynArr points = random_points(1000000, 1, fine);
    sqCompareForSimplestClosedPath const order(giPoint2(100, 50));
    auto const is_sorted = [&] {
        return std::is_sorted(points.data(), points.data() + points.size(),
                              [&](giPoint2 const & a, giPoint2 const & b) { return order.compare(&a, &b) < 0; });
    };
    order.sort(points.data(), points.size());
    EXPECT_TRUE(is_sorted());
    order.sort(points.data(), points.size());
    EXPECT_TRUE(is_sorted());
    std::reverse(points.data(), points.data() + points.size());
    order.sort(points.data(), points.size());
    EXPECT_TRUE(is_sorted());
    std::fill(points.data(), points.data() + points.size(), giPoint2(1, 2));
    order.sort(points.data(), points.size());
}
