#include "examples/run_program.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

namespace {

using namespace datumfit::tests;

std::string contents(std::string const & path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

/// Runs fit_points on a file that holds the text.
Outcome fit(std::string const & arguments, std::string const & text) {
    std::string const path =
        testing::TempDir() + testing::UnitTest::GetInstance()->current_test_info()->name() + std::string(".csv");
    std::ofstream(path, std::ios::binary) << text;
    Outcome const outcome = run(DATUMFIT_EXAMPLES_DIR "/fit_points " + arguments + " '" + path + "'");
    std::remove(path.c_str());
    return outcome;
}

TEST(FitPoints, RefusesABadFileInOneLineThatNamesTheRow) {
    struct {
        char const *primitive, *text, *reason;
    } const cases[] = {
        {"plane", "", "holds no points"},
        {"plane", "x,y,z\n# none\n", "holds no points"},
        {"plane", "0,0,0\n1,0,0\n\n0,one,0\n", "row 4: 'one' is not a number"},
        {"plane", "zero,0,0\n", "row 1: 'zero' is not a number"},
        {"plane", "0,0,0\n1,0\n", "row 2: 2 columns, where the first row has 3"},
        {"plane", "x,y,z\n0,0,0\n1,0,0,0\n", "row 3: 4 columns, where the first row has 3"},
        {"plane", "0,0,0\n1,,0\n", "row 2: a number is missing"},
        {"plane", "0,0,0\n1,nan,0\n", "row 2: 'nan' is not a finite number"},
        {"plane", "0 0 0\n1 -inf 0\n", "row 2: '-inf' is not a finite number"},
        {"plane", "0,0,0\n1,1e999,0\n", "row 2: '1e999' is out of range"},
        {"plane", "0,0,0\n1,1e200,0\n", "row 2: '1e200' is out of range"},
        {"plane", "0,0,0\n1,2mm,0\n", "row 2: '2mm' is not a number"},
        {"plane", "0;0;0\n1,5;0;0\n", "row 2: '1,5' is not a number"},
        {"plane", "x,y,height\n0,0,0\n", "row 1: 'height' is no column"},
        {"plane", "x,y,z,x\n", "row 1: column x stands twice"},
        {"plane", "x,y,z,r\n0,0,0,-1\n", "row 2: the probe radius is negative"},
        {"plane", "0,0,0,0,0,0\n", "row 1: the normal has no direction"},
        {"plane", "0,0\n1,0\n0,1\n", "a column z is needed for plane"},
        {"plane", "0,0,0\n1,0,0\n", "too few points for plane: 2, where 3 are needed"},
        {"sphere", "1,0,0\n0,1,0\n0,0,1\n", "too few points for sphere: 3, where 4 are needed"},
        {"circle", "1,1,5\n2,2,-1\n4,4,9\n", "all points lie on one line and determine no circle"},
        {"line3", "0.1,7,0.3\n0.1,7,0.3\n0.1,7,0.3\n", "all points coincide and determine no line3"},
        {"sphere", "1,0,3\n0,1,3\n-1,0,3\n0,-1,3\n", "all points lie in one plane and determine no sphere"},
        {"cylinder", "1,0,0\n0,1,1\n-1,0,2\n0,-1,3\n", "too few points for cylinder: 4, where 5 are needed"},
        {"cylinder", "1,0,3\n0,1,3\n-1,0,3\n0,-1,3\n1,1,3\n", "all points lie in one plane and determine no cylinder"},
        {"cone", "1,0,0\n0,1,1\n-1,0,2\n0,-1,3\n1,1,1\n", "too few points for cone: 5, where 6 are needed"},
        {"cone", "0,0,0\n1,2,3\n2,4,6\n3,6,9\n4,8,12\n5,10,15\n", "all points lie on one line and determine no cone"},
        {"ellipse", "1,0\n0,1\n-1,0\n0,-1\n", "too few points for ellipse: 4, where 5 are needed"},
        {"torus", "1,0,0\n0,1,1\n-1,0,2\n0,-1,3\n1,1,1\n2,0,0\n", "too few points for torus: 6, where 7 are needed"},
        {"torus", "1,0,3\n0,1,3\n2,0,3\n0,3,3\n1,1,3\n9,0,3\n0,5,3\n",
         "all points lie in one plane and determine no torus"},
        {"direct_circle", "0,0\n1,2.001\n2,4\n", "the direct fit is singular"},
        {"direct_sphere", "1,0,3\n0,1,3\n-1,0,3\n0,-1,3\n",
         "all points lie in one plane and determine no direct_sphere"},
    };
    for (auto const & bad : cases) {
        SCOPED_TRACE(bad.text);
        Outcome const outcome = fit(bad.primitive, bad.text);
        EXPECT_EQ(1, outcome.code);
        EXPECT_NE(outcome.text.npos, outcome.text.find(std::string(".csv: ") + bad.reason)) << outcome.text;
        EXPECT_EQ(outcome.text.size() - 1, outcome.text.find('\n')) << outcome.text;
    }
    Outcome const missing = run(DATUMFIT_EXAMPLES_DIR "/fit_points plane /nowhere/points.csv");
    EXPECT_EQ(1, missing.code);
    EXPECT_EQ("fit_points: /nowhere/points.csv: there is no such file, or it may not be read\n", missing.text);
}

TEST(FitPoints, RefusesArgumentsThatItCannotUnderstand) {
    std::string const probed = "x,y,z,r\n1,0,0,1\n0,1,0,1\n-1,0,0,1\n0,0,1,1\n";
    for (char const * arguments :
         {"", "blob", "circle --wide", "circle --probe-radius -1", "circle", "circle3", "circle2 --normal 0,0,1",
          "line2 --origin 0,0 --normal 0,0,1", "circle other.csv", "cone", "torus", "ellipse",
          "torus --inside --axis 0,0,1", "ellipse2 --normal 0,0,1", "direct_sphere --inside",
          "circle --inside --axis 0,0,1", "cylinder --inside --axis 0,0,0"}) {
        EXPECT_EQ(2, fit(arguments, probed).code) << arguments;
    }
    EXPECT_EQ(2, fit("circle --inside", "1,0\n0,1\n-1,0\n").code);
    EXPECT_EQ(0, run(DATUMFIT_EXAMPLES_DIR "/fit_points --help").code);
}

/// The value that a report gives a quantity.
double value(Outcome const & outcome, std::string const & quantity) {
    auto const at = outcome.text.find("\n  " + quantity + " ");
    EXPECT_NE(outcome.text.npos, at) << quantity << " in " << outcome.text;
    return at == outcome.text.npos ? 0.0 : std::stod(outcome.text.substr(at + 3 + quantity.size()));
}

TEST(FitPoints, ReadsTheSamePointsInEveryForm) {
    for (char const * text :
         {"5,2\n1,6\n-3,2\n1,-2", "\xEF\xBB\xBF# circle\r\nX, Y\r\n5, 2\r\n1, 6\r\n-3, 2\r\n1, -2\r\n",
          "5;2;0\n\n1;6;0\n-3;2;7\n1;-2;0\n", "\t+5.0\t2\n1 6e0  \n-.3e1   2\n 1 -2\n",
          "y,x\n2,5\n6,1\n2,-3\n-2,1\n"}) {
        SCOPED_TRACE(text);
        Outcome const outcome = fit("circle", text);
        EXPECT_EQ(0, outcome.code);
        EXPECT_NEAR(1.0, value(outcome, "centre x"), 1e-9);
        EXPECT_NEAR(2.0, value(outcome, "centre y"), 1e-9);
        EXPECT_NEAR(4.0, value(outcome, "radius"), 1e-9);
    }
}

TEST(FitPoints, TakesTheProbeIntoAccount) {
    std::string const ring = "x,y,r\n4,0,0.5\n0,4,0.5\n-4,0,0.5\n0,-4,0.5\n";
    EXPECT_NEAR(4.5, value(fit("circle --inside", ring), "radius"), 1e-9);
    EXPECT_NEAR(3.5, value(fit("circle --outside", ring), "radius"), 1e-9);
    EXPECT_NEAR(0.0, value(fit("circle --inside", ring), "largest residual"), 1e-9);
    EXPECT_NEAR(6.0, value(fit("circle --inside --probe-radius 2", ring), "radius"), 1e-9);
    EXPECT_NEAR(4.0, value(fit("circle --probe-radius 0", ring), "radius"), 1e-9);
    std::string const below = "0,0,1,0.25,0,0,-1\n9,0,1,0.25,0,0,-1\n0,9,1,0.25,0.1,0,-1\n9,9,1,0.25,0,0,-1\n";
    Outcome const plane = fit("plane --exact", below);
    EXPECT_NEAR(1.25, value(plane, "point z"), 1e-12);
    EXPECT_NEAR(-1.0, value(plane, "normal z"), 1e-12);
    EXPECT_NEAR(0.0, value(plane, "largest residual"), 1e-12);
    EXPECT_NEAR(0.75, value(fit("plane --normal 0,0,1", below), "point z"), 1e-9);
    for (char const * side : {"", "-"}) {  // radii that differ tell the side without a normal
        std::ostringstream rows;
        rows << "0,0," << side << "0.25,0.25\n9,0," << side << "0.5,0.5\n0,9," << side << "0.25,0.25\n9,9," << side
             << "0.75,0.75\n";
        EXPECT_NEAR(0.0, value(fit("plane", rows.str()), "largest residual"), 1e-9) << rows.str();
    }
    EXPECT_NEAR(2.0, value(fit("line --probe-radius 3 --normal 0,1,0", "0,5\n1,5\n7,5\n"), "intercept"), 1e-9);
}

TEST(FitPoints, PrefersTheCylinderAlongAGivenAxis) {
    std::string const cube =
        "1,1,1\n-1,1,1\n1,-1,1\n-1,-1,1\n1,1,-1\n-1,1,-1\n1,-1,-1\n-1,-1,-1\n";  // three fit exactly
    for (auto const & [axis, direction] : {std::pair("9,0,-1", "direction x"), {"0,9,1", "direction y"}}) {
        Outcome const bore = fit("cylinder --inside --probe-radius 0.5 --axis " + std::string(axis), cube);
        EXPECT_NEAR(1.0, std::fabs(value(bore, direction)), 1e-9);
        EXPECT_NEAR(0.5 + std::sqrt(2.0), value(bore, "radius"), 1e-9);
        Outcome const bolt = fit("cylinder --outside --probe-radius 0.5 --axis " + std::string(axis), cube);
        EXPECT_NEAR(std::sqrt(2.0) - 0.5, value(bolt, "radius"), 1e-9);
        EXPECT_NEAR(1.0, std::fabs(value(fit("cylinder --axis " + std::string(axis), cube), direction)), 1e-9);
    }
}

TEST(FitPoints, TakesTheProbeOfAConeIntoAccountAndTellsInFromOut) {
    // Half angle with the tangent 3 / 4, apex at z = 5; the last row but one lies on it at z = -3.
    auto const cone = [](char const * z) {
        return std::string("3,0,1\n0,3,1\n-3,0,1\n0,-3,1\n6,0,-3\n0,6,-3\n-6,0,-3\n0,-6,-3\n") + "4.8,3.6," + z +
               "\n-3.6,4.8,-3\n";
    };
    for (auto const & [options, apex] :
         {std::pair("", 5.0), {" --inside", 5.0 + 5.0 / 3}, {" --outside", 5.0 - 5.0 / 3}}) {
        std::string const arguments =
            "cone --axis 0,0,1" + (*options != 0 ? options + std::string(" --probe-radius 1") : "");
        Outcome const exact = fit(arguments, cone("-3"));
        EXPECT_NEAR(apex, value(exact, "apex z"), 1e-9);
        EXPECT_NEAR(1.0, value(exact, "direction z"), 1e-9);
        EXPECT_NEAR(std::atan(0.75) * 180 / std::acos(-1.0), value(exact, "half angle"), 1e-9);
        EXPECT_NEAR(0.0, value(exact, "largest residual"), 1e-9);
        EXPECT_GT(value(fit(arguments, cone("-2.9")), "largest residual"), 0.0);
        EXPECT_LT(value(fit(arguments, cone("-3.1")), "largest residual"), 0.0);
    }
    Outcome const tube = fit("cone", "4,0,0\n0,4,1\n-4,0,0\n0,-4,1\n4,0,5\n0,4,5\n-4,0,5\n0,-4,6\n");
    EXPECT_NE(tube.text.npos, tube.text.find("determine no cone")) << tube.text;
}

TEST(FitPoints, FitsATurnedEllipseDirectlyToo) {
    // Semi-axes 5 and 3 about 1, 2 with the major axis along 4, 3; `stretched` moves the first point along that.
    auto const ellipse = [](double stretched, double x, char const * between = ",") {
        double const points[][2] = {{5 + 0.8 * stretched, 5 + 0.6 * stretched},
                                    {-3, -1},
                                    {-0.8, 4.4},
                                    {2.8, -0.4},
                                    {3.12, 5.84},
                                    {5.28, 2.96},
                                    {-3.28, 1.04}};
        std::ostringstream rows;
        for (auto const & p : points) rows << x + p[0] << between << p[1] << '\n';
        return rows.str();
    };
    for (std::string const primitive : {"ellipse", "direct_ellipse"}) {
        Outcome const exact = fit(primitive, ellipse(0, 0));
        EXPECT_NEAR(1.0, value(exact, "centre x"), 1e-9);
        EXPECT_NEAR(2.0, value(exact, "centre y"), 1e-9);
        EXPECT_NEAR(5.0, value(exact, "major semi-axis"), 1e-9);
        EXPECT_NEAR(3.0, value(exact, "minor semi-axis"), 1e-9);
        EXPECT_NEAR(std::atan(0.75) * 180 / std::acos(-1.0), value(exact, "angle"), 1e-9);
        EXPECT_NEAR(0.0, value(exact, "largest residual"), 1e-9);
    }
    double const best = value(fit("ellipse", ellipse(1, 0)), "deviation");
    EXPECT_GT(value(fit("direct_ellipse", ellipse(1, 0)), "deviation"), best);
    Outcome const lifted = fit("ellipse2 --origin 0,6,0 --normal 0,1,0", ellipse(0, 0, ",7,"));
    EXPECT_NEAR(0.75, value(lifted, "direction z") / value(lifted, "direction x"), 1e-9);
    EXPECT_NEAR(6.0, value(lifted, "centre y"), 1e-9);
    EXPECT_NEAR(1.0, std::fabs(value(lifted, "largest residual")), 1e-9);
    Outcome const far = fit("direct_ellipse", ellipse(0, 9999));
    EXPECT_NE(far.text.npos, far.text.find("a circle: no ellipse")) << far.text;
}

TEST(FitPoints, FitsCirclesAndSpheresDirectly) {
    Outcome const circle = fit("direct_circle", "5,2\n1,6\n-3,2\n1,-2\n");
    EXPECT_NEAR(2.0, value(circle, "centre y"), 1e-9);
    EXPECT_NEAR(4.0, value(circle, "radius"), 1e-9);
    Outcome const sphere = fit("direct_sphere", "5,2,3\n1,6,3\n-3,2,3\n1,2,7\n1,2,-1\n");
    EXPECT_NEAR(3.0, value(sphere, "centre z"), 1e-9);
    EXPECT_NEAR(4.0, value(sphere, "radius"), 1e-9);
    EXPECT_NEAR(0.0, value(sphere, "largest residual"), 1e-9);
}

TEST(FitPoints, TakesTheProbeOfATorusIntoAccountAndTellsInFromOut) {
    std::string const torus =  // radii 4 and 1 about 0, 0, 2
        "5,0,2\n0,5,2\n-3,0,2\n0,-5,2\n4,0,3\n0,4,1\n-4,0,1\n0,-4,3\n2.4,3.2,3\n";
    Outcome const bore = fit("torus --inside --probe-radius 0.5", torus);
    EXPECT_NEAR(2.0, value(bore, "centre z"), 1e-9);
    EXPECT_NEAR(1.0, std::fabs(value(bore, "direction z")), 1e-9);
    EXPECT_NEAR(4.0, value(bore, "major radius"), 1e-9);
    EXPECT_NEAR(1.5, value(bore, "minor radius"), 1e-9);
    EXPECT_NEAR(0.0, value(bore, "largest residual"), 1e-9);
    Outcome const bump = fit("torus", torus + "-3,4,2\n2.4,-3.2,1\n-1.8,-2.4,2\n5.3,0,2\n");
    EXPECT_NEAR(1.0, value(bump, "minor radius"), 0.02);
    EXPECT_NEAR(0.17, value(bump, "largest residual"), 0.01);
}

TEST(FitPoints, NamesTheRowOfTheLargestResidual) {
    Outcome const outcome = fit("plane", "# a dent\n0,0,0\n9,0,0\n4,5,-1\n0,9,0\n9,9,0\n");
    EXPECT_NE(outcome.text.npos, outcome.text.find("in row 4, at 4, 5, -1\n")) << outcome.text;
    EXPECT_NEAR(0.8, std::fabs(value(outcome, "largest residual")), 0.01);  // the mean height is -0.2
}

TEST(FitPoints, TellsAPublishedValueThatDiffers) {
    std::string const points =
        "# fit: circle\n# published: centre x = 1.00\n# published: radius = 2.00\n3,0\n1,2\n-1,0\n";
    Outcome const same = fit("--published", "# Source\n" + points);
    EXPECT_EQ(0, same.code) << same.text;
    Outcome const other = fit("--published", "# Source\n# published: centre y = 0.01\n" + points);
    EXPECT_EQ(1, other.code);
    EXPECT_NE(other.text.npos, other.text.find("2 of 3 published values agree")) << other.text;
}

TEST(FitPoints, AgreesWithTheLiteratureInTheDemonstration) {
    Outcome const demo = run(DATUMFIT_EXAMPLES_SOURCE_DIR "/demo.sh " DATUMFIT_EXAMPLES_DIR);
    EXPECT_EQ(0, demo.code) << demo.text;
}

TEST(HostProgram, IsTheOneInTheReadme) {
    std::string const program = contents(DATUMFIT_EXAMPLES_SOURCE_DIR "/host.cpp");
    std::string const readme = contents(DATUMFIT_EXAMPLES_SOURCE_DIR "/../README.md");
    EXPECT_NE(readme.npos, readme.find("```cpp\n" + program + "```\n"));
    Outcome const host = run(DATUMFIT_EXAMPLES_DIR "/host");
    EXPECT_EQ(0, host.code);
    EXPECT_NE(host.text.npos, host.text.find("radius 4.7142")) << host.text;  // Gander, Golub & Strebel 1994
}

}  // namespace
