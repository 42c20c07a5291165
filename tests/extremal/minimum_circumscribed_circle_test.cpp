#include "support/shapes.h"

#include <datumfit/extremal/minimum_circumscribed_circle.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace {

using points2 = std::vector<giPoint2>;
using numbers = std::vector<double>;

giCircle2 enclosing(points2 const & points) {
    return sqMinimumCircumscribedCircle::fit_smallest_enclosing_circle(points);
}
giCircle2 enclosing(points2 const & points, numbers const & radii, bool inside) {
    return sqMinimumCircumscribedCircle::fit_smallest_enclosing_circle_probed(points, radii, inside);
}

// The order of the points as the class tells it, in plain words.
struct plain_loops {
    points2 const & p;

    bool outside(giCircle2 const & c, giPoint2 const & q) const { return distance(c.centre(), q) > c.radius(); }
    bool same(giPoint2 const & a, giPoint2 const & b) const { return coincident(a, b, 1.1920928955078125e-7); }
    giCircle2 about(giPoint2 const & a, giPoint2 const & b) const {
        giPoint2 const middle = a.interpolate(b, 0.5);
        return giCircle2(middle, distance(a, middle));
    }
    giCircle2 fit() const {
        giCircle2 c = about(p[0], p[1]);
        for (std::size_t i = 2; i < p.size(); ++i) {
            if (outside(c, p[i])) c = with_one(i);
        }
        return c;
    }
    giCircle2 with_one(std::size_t q) const {
        giCircle2 c = about(p[0], p[q]);
        for (std::size_t j = 1; j < q; ++j) {
            if (outside(c, p[j]) && !same(p[j], p[q])) c = with_two(j, q);
        }
        return c;
    }
    giCircle2 with_two(std::size_t j, std::size_t q) const {
        giCircle2 c = about(p[j], p[q]);
        for (std::size_t k = 0; k < j; ++k) {
            if (outside(c, p[k]) && !same(p[k], p[j]) && !same(p[k], p[q])) c.become(p[k], p[j], p[q]);
        }
        return c;
    }
};

// The least radius of all circles through two or three of the points that hold all to that rounding.
double least_of_pairs_and_triples(points2 const & points, double rounding) {
    double least = std::numeric_limits<double>::max();
    auto const consider = [&](giCircle2 const & c) {
        bool const holds = std::all_of(points.begin(), points.end(), [&](giPoint2 const & p) {
            return distance(c.centre(), p) <= c.radius() + rounding;
        });
        if (holds) least = std::min(least, c.radius().value());
    };
    for (std::size_t i = 0; i < points.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            consider(plain_loops{points}.about(points[i], points[j]));
            for (std::size_t k = 0; k < j; ++k) {
                giCircle2 c;
                c.become(points[i], points[j], points[k]);
                if (!c.centre().invalid()) consider(c);
            }
        }
    }
    return least;
}

class random_sets {
public:
    enum kind { scattered, collinear, doubled, cocircular, regular, lattice, sorted, kinds };

    double uniform(double from, double to) { return from + (to - from) * (static_cast<double>(engine_()) * 0x1p-32); }
    points2 make(int which, int n, double size = 1.0) {
        points2 points;
        for (int i = 0; i < n; ++i) {
            double const x = uniform(-1.0, 1.0), y = uniform(-1.0, 1.0),
                         t = utMath::pi() * (which == regular ? 2.0 * i / n : x);
            giVector2 v(x, y);
            if (which == collinear) v = giVector2(x, 0.3 * x);
            if (which == cocircular || which == regular) v = giVector2(std::cos(t), std::sin(t));
            if (which == lattice) v = giVector2(std::floor(3.0 * x), std::floor(3.0 * y));
            points.push_back(which == doubled && i % 2 ? points.back() : giPoint2(giOrigin) + size * v);
        }
        if (which == sorted) std::sort(points.begin(), points.end(), [](auto & a, auto & b) { return a.x() < b.x(); });
        return points;
    }
    std::mt19937 & engine() { return engine_; }

private:
    std::mt19937 engine_{17};
};

TEST(EnclosingCircle, IsTheSmallestOfAllPairsAndTriples) {
    random_sets sets;
    for (int i = 0; i < 560; ++i) {
        SCOPED_TRACE(i);
        placement const & at = placements[i / random_sets::kinds % 4];
        points2 points = sets.make(i % random_sets::kinds, 2 + i / random_sets::kinds % 15, at.size);
        for (giPoint2 & p : points) p += giVector2(at.offset, -at.offset / 3.0);
        // Of the centre and the radius. Where points of one rim lie close together the radius may gain more than that.
        double const rounding = 4.0 * std::numeric_limits<double>::epsilon() * (at.offset + at.size);
        double const least = least_of_pairs_and_triples(points, rounding);
        for (int order = 0; order < 4; ++order) {
            giCircle2 const c = enclosing(points);
            EXPECT_NEAR(least, c.radius(), 2.0 * rounding + 1e-12 * at.size);
            for (giPoint2 const & p : points) EXPECT_LE(distance(c.centre(), p), c.radius() + rounding);
            std::shuffle(points.begin(), points.end(), sets.engine());
        }
    }
}

// Of close points of a rim rounding makes wide circles, unless they are seen from one of them.
TEST(EnclosingCircle, KeepsTheRadiusOfARim) {
    mlRandom random(5);
    for (placement const & at : placements) {
        double const rounding = std::numeric_limits<double>::epsilon() * at.offset;
        for (int i = 0; i < 2000; ++i) {
            points2 points;
            for (int k = 0; k < 3 + i % 20; ++k) {
                double const t = utMath::pi() * random.minus_one_one();
                points.emplace_back(at.offset + at.size * std::cos(t), at.size * std::sin(t) - at.offset / 3.0);
            }
            EXPECT_LT(enclosing(points).radius(), at.size * (1.0 + 1e-12) + 1000.0 * rounding) << at.name;
        }
    }
}

TEST(EnclosingCircle, TakesThePointsInTheirOrderToTheLastBit) {
    random_sets sets;
    // The squares of the smallest sets vanish, those of the largest overflow.
    for (double const size : {1.0, 1e-3, 1e-165, 1e200}) {
        for (int i = 0; i < 140; ++i) {
            points2 points = sets.make(i % random_sets::kinds, 2 + 3 * (i / 7));
            giPoint2 const centre = enclosing(points).centre();
            points.push_back(centre);  // where a distance has no square
            points.insert(points.begin() + 2, points.front());
            giPoint2 const first = points.front();  // from which the others are seen
            for (giPoint2 & p : points) p.become(size * (p.x() - first.x()), size * (p.y() - first.y()));
            giCircle2 const expected = plain_loops{points}.fit(), found = enclosing(points);
            EXPECT_TRUE(expected.centre().x() == found.centre().x() && expected.centre().y() == found.centre().y());
            EXPECT_EQ(expected.radius().squared(), found.radius().squared());
        }
    }
}

TEST(EnclosingCircle, OfFewPoints) {
    EXPECT_TRUE(enclosing({}).centre().invalid() && enclosing({}).radius().invalid());
    EXPECT_TRUE(enclosing({}, {}, true).centre().invalid());
    giPoint2 const p(3.0, 4.0), beside(3.0 + 1e-7, 4.0);
    for (points2 const & points : {points2{p}, points2{p, p}, points2{p, p, p}}) {
        EXPECT_TRUE(enclosing(points).radius() == 0.0 && enclosing(points).centre().x() == 3.0);
    }
    giCircle2 const far_sides = enclosing({{0.0, 0.0}, {6.0, 8.0}}, {1.0, 3.0}, true);
    EXPECT_NEAR(7.0, far_sides.radius(), 1e-15);
    EXPECT_NEAR(0.0, distance(far_sides.centre(), giPoint2(3.6, 4.8)), 2e-15);
    EXPECT_NEAR(3.0, enclosing({{0.0, 0.0}, {6.0, 8.0}}, {1.0, 3.0}, false).radius(), 1e-15);
    giCircle2 const as_one = enclosing({p, beside, p}, {5.0, 6.0, 7.0}, true);
    EXPECT_TRUE(as_one.radius() == 0.0 && as_one.centre().x() == 3.0) << "whatever the radii";
}

// The greatest reach from (x, y) is convex: its minimum over y for each x, and over x, by golden sections.
template <class Function>
double least_value(double from, double to, Function f) {
    double const golden = 0.5 * (std::sqrt(5.0) - 1.0);
    double a = from, b = to, c = b - golden * (b - a), d = a + golden * (b - a), fc = f(c), fd = f(d);
    for (int i = 0; i < 50; ++i) {
        bool const left = fc < fd;
        (left ? b : a) = left ? d : c;
        (left ? d : c) = left ? c : d;
        (left ? fd : fc) = left ? fc : fd;
        double const x = left ? b - golden * (b - a) : a + golden * (b - a);
        (left ? c : d) = x;
        (left ? fc : fd) = f(x);
    }
    return std::min(fc, fd);
}

double greatest_reach(points2 const & points, numbers const & radii, bool inside, giPoint2 const & centre) {
    double greatest = 0.0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        greatest = std::max(greatest, distance(centre, points[i]) + (inside ? radii[i] : -radii[i]));
    }
    return greatest;
}

TEST(ProbedEnclosingCircle, IsTheLeastReach) {
    random_sets sets;
    for (int i = 0; i < 48; ++i) {
        SCOPED_TRACE(i);
        bool const inside = i % 2;
        points2 const points = sets.make(i % 3 ? random_sets::cocircular : random_sets::scattered, 2 + i % 13);
        numbers radii;  // equal, or of discs that do not hold each other
        for (std::size_t k = 0; k < points.size(); ++k)
            radii.push_back(i % 4 < 2 ? 0.1 : sets.uniform(0.1, inside ? 0.11 : 1.2));
        giCircle2 const c = enclosing(points, radii, inside);
        double const least = least_value(-1.5, 1.5, [&](double x) {
            return least_value(-1.5, 1.5,
                               [&](double y) { return greatest_reach(points, radii, inside, giPoint2(x, y)); });
        });
        EXPECT_NEAR(least, c.radius(), 1e-8);
        EXPECT_LE(greatest_reach(points, radii, inside, c.centre()), c.radius() + 1e-14);
        if (i % 4 < 2) {
            EXPECT_NEAR(0.0, distance(c.centre(), enclosing(points).centre()), 1e-8);
        }
    }
}

TEST(ProbedEnclosingCircle, ReachesDiscsThatOverlapFromAPointOfAll) {
    points2 const points = {{0.0, 0.0}, {2.0, 0.0}, {1.0, 1.5}, {0.5, 0.0}};
    for (numbers const & radii :
         {numbers{2.0, 2.0, 2.0, 1.0}, numbers{5.0, 1.0, 3.0, 1.0}, numbers{1.0, 4.0, 2.0, 1.0}}) {
        for (std::size_t n = 2; n <= points.size(); ++n) {
            giCircle2 const c = enclosing(points2(points.begin(), points.begin() + static_cast<long>(n)), radii, false);
            EXPECT_EQ(0.0, c.radius());
            for (std::size_t k = 0; k < n; ++k) EXPECT_LE(distance(c.centre(), points[k]), radii[k] + 1e-15);
        }
    }
}

}  // namespace
