#include <datumfit/sampling/scan_range.h>
#include <gtest/gtest.h>

#include <vector>

namespace {

using values = std::vector<double>;

values pass_of(sqScanRange & scan) {
    values given;
    for (double value = 0.0; given.size() < 20 && scan.next(value);) given.push_back(value);
    return given;
}

TEST(ScanRange, HalvesItsStepDownToTheLimit) {
    sqScanRange scan(0.0, 8.0, 1.0);
    EXPECT_EQ((values{0.0, 8.0, 4.0}), pass_of(scan));
    scan.reset_step();
    EXPECT_EQ((values{0.0, 8.0, 4.0}), pass_of(scan));
    EXPECT_EQ(1, scan.reduce_step());
    EXPECT_EQ((values{2.0, 6.0}), pass_of(scan));
    EXPECT_EQ(1, scan.reduce_step());
    EXPECT_EQ((values{1.0, 3.0, 5.0, 7.0}), pass_of(scan));
    EXPECT_EQ(0, scan.reduce_step()) << "the half is the limit itself";
    EXPECT_EQ(values{}, pass_of(scan));
    scan.reset_step();
    EXPECT_EQ((values{1.0, 3.0, 5.0, 7.0}), pass_of(scan)) << "without the ends";
}

TEST(ScanRange, EndsOnIntervalsWithoutLengthAndOnStepsLostInRounding) {
    sqScanRange point(2.0, 2.0, 0.0), narrow(1e6, 1e6 + 1e-9, 0.0);
    EXPECT_EQ((values{2.0, 2.0}), pass_of(point));
    EXPECT_EQ(0, point.reduce_step());
    for (; narrow.reduce_step();) EXPECT_LT(pass_of(narrow).size(), 20u);
}

}  // namespace
