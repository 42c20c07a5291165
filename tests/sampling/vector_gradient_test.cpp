#include <datumfit/foundation/utilities/math.h>
#include <datumfit/sampling/vector_gradient.h>
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

using counts = std::vector<int>;

// The number of directions on each ring as they are walked, each compared with its polar angle and azimuth.
counts walk(sqVectorGradient const & fan, giVector3 const & centre, giVector3 const & reference) {
    giVector3 const w = centre.unit(), u = reference.cross(w).unit(), v = w.cross(u);
    counts steps;
    int total = 0;
    sqVectorGradientIterator i = fan.iterator();
    for (int step = 1; i++; ++step, ++total) {
        if (steps.empty() || step > steps.back()) {
            steps.push_back(i.ring().steps);
            step = 1;
        }
        double const t = static_cast<double>(steps.size() - 1) * fan.step_angle();
        double const phi = step * 2.0 * utMath::pi() / steps.back();  // of the last on the +y side
        giVector3 const expected = std::cos(t) * w + std::sin(t) * (std::sin(phi) * u + std::cos(phi) * v);
        EXPECT_NEAR(0.0, (i.vector() - expected).length().value(), 1e-15);
        EXPECT_TRUE(i.ring().angle == t && i.ring().sin_angle == std::sin(t));
    }
    EXPECT_TRUE(i++ == 0 && fan.total_steps() == total);
    return steps;
}

TEST(VectorGradient, WalksOutwardsInARightHandedFrame) {
    giVector3 const x(giAxisX), y(giAxisY);
    giVector3 const cases[][2] = {{giVector3(0.0, 0.0, -2.0), x}, {giVector3(3.0, -3.0, 1.0), x},
                                  {giVector3(-0.2, 0.1, 0.5), y}, {giVector3(3.0, 2.999, 0.0), y},
                                  {giVector3(0.0, 7.0, 0.0), x},  {giVector3(1e200, 2e200, 1e200), x}};
    for (auto const & [centre, reference] : cases) {
        sqVectorGradient fan(y, 0.1, 9);
        fan = sqVectorGradient(centre, utMath::pi(), 20);  // has its own rings when that is gone
        EXPECT_NEAR(0.04136, fan.spot_radius(), 5e-6);
        EXPECT_EQ((counts{1, 7, 13, 19, 25, 31, 37, 42, 47, 52, 56, 60, 64, 67, 70, 72, 74, 75, 76, 76}),
                  walk(fan, centre, reference));
        EXPECT_EQ((counts{1, 7, 11, 12}), walk({centre, utMath::pi(), 4}, centre, reference));
        EXPECT_EQ((counts{1, 4}), walk({centre, utMath::pi(), 2}, centre, reference));
        EXPECT_EQ((counts{1}), walk({centre, 1.0, -1}, centre, reference));
        EXPECT_EQ((counts{1, 1, 1}), walk({centre, 0.0, 3}, centre, reference));
    }
    EXPECT_EQ(0.25, sqVectorGradient(x, 2.0, 5).step_angle());
    sqVectorGradient const lost(giVector3(0.0, 0.0, 0.0), 1.0, 3);
    for (sqVectorGradientIterator i = lost.iterator(); i++;) EXPECT_TRUE(i.vector().invalid());
}

}  // namespace
