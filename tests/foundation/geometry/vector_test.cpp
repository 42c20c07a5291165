#include <datumfit/foundation/geometry/unit_vec2.h>
#include <datumfit/foundation/geometry/unit_vec3.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();
constexpr double greatest = std::numeric_limits<double>::max();

static_assert(!std::is_convertible<giUnitVec3 &, giVector3 &>::value, "a unit vector is not changed as a vector");

double slot(giVector3 const & v) {
    double l;
    std::memcpy(&l, reinterpret_cast<char const *>(&v) + 3 * sizeof l, sizeof l);
    return l;
}

TEST(Vector, RemembersItsLengthUntilItChanges) {
    giVector3 const v(2.0, 3.0, 6.0);
    EXPECT_TRUE(slot(v) == greatest && v.l_check() == 0 && slot(v) == -49.0);
    EXPECT_TRUE(v.length() == 7.0 && slot(-v) == 7.0);

    giVector3 changed[] = {v, v, v, v, v};
    changed[0].set_x(0.0);
    changed[1].set_coordinate(giAxisY, 0.0);
    changed[2] += v;
    changed[3] -= 3.0 * v;
    changed[4] *= -2.0;
    double const squares[] = {45.0, 40.0, 196.0, 196.0, 196.0};
    for (int i = 0; i < 5; ++i) EXPECT_EQ(squares[i], changed[i].length().squared()) << i;
    EXPECT_EQ(25.0, giVector2(3.0, 4.0).cross(giVector2(3.0, 4.0).orthogonal()));
    EXPECT_FALSE(std::signbit(giVector3(0.0, -0.0, 0.0).length().value()));
    EXPECT_FALSE(giVector3(-greatest, 0.0, 0.0).is_zero(greatest) || giVector3(1.0, 0.0, greatest).invalid());
}

TEST(UnitVector, HasUnitLengthAtAnyScale) {
    for (double const scale : {4e-324, 1e-310, 1e-200, 1e-140, 1.0, 1e150, 1e200, 4e307}) {
        SCOPED_TRACE(scale);
        giUnitVec3 const u(2.0 * scale, -3.0 * scale, scale);
        giUnitVec2 const v(-4.0 * scale, 3.0 * scale);
        // A sum of squares, its root and a quotient are off by 2.5 epsilon at most, subnormals by what they are.
        double const tolerance = scale < 1e-300 ? 0.2 : 2.5 * epsilon;
        EXPECT_NEAR(1.0, u.dot(u), 4.0 * epsilon);
        EXPECT_NEAR(-3.0 / std::sqrt(14.0), u.y(), tolerance);
        EXPECT_NEAR(-0.8, v.x(), tolerance);
        EXPECT_NEAR(0.6, v.y(), tolerance);
    }
}

TEST(UnitVector, DoesNotDriftWhenMadeAgain) {
    giVector3 const v(0.1, -0.7, 0.3);
    giUnitVec3 const u(v), opposite = -u;
    EXPECT_TRUE(slot(v) == greatest && slot(u) == 1.0);  // neither is written to when it is read by other threads
    EXPECT_TRUE(opposite.x() == -u.x() && opposite.y() == -u.y() && opposite.z() == -u.z());
    giVector3 again = u;
    for (int i = 0; i < 100; ++i) again = giUnitVec3(again.x(), again.y(), again.z());
    EXPECT_LE((again - u).length(), 2.0 * epsilon);
}

TEST(UnitVector, WithoutDirectionIsInvalid) {
    double const infinity = std::numeric_limits<double>::infinity();
    for (giVector3 const & v : {giVector3(0.0, 0.0, 0.0), giVector3(), giVector3(0.0, infinity, 1.0)}) {
        giUnitVec3 const u(v);
        EXPECT_TRUE(u.invalid() && (-u).invalid() && u.any_normal().invalid());
        EXPECT_FALSE(std::isnan(u.x() + u.y() + u.z()));
    }
    EXPECT_TRUE(giUnitVec2(0.0, 0.0).invalid() && (-giUnitVec2()).invalid());
}

TEST(UnitVector, KnowsWhatIsAcross) {
    for (giUnitVec3 const & u : {giUnitVec3(giAxisX), giUnitVec3(giAxisY), giUnitVec3(giAxisZ),
                                 giUnitVec3(1e-9, 1.0, 1e-12), giUnitVec3(-3.0, 2.0, -3.0)}) {
        EXPECT_NEAR(0.0, u.dot(u.any_normal()), epsilon);
        giVector3 const v(5.0, -7.0, 2.0), part = u.project_normal(v);
        EXPECT_NEAR(0.0, u.dot(part), 16.0 * epsilon);
        EXPECT_NEAR(u.cross(v).length(), part.length(), 16.0 * epsilon);
    }
}

}  // namespace
