#include <datumfit/foundation/utilities/numeric_cast.h>
#include <datumfit/foundation/utilities/observer_ptr.h>
#include <datumfit/foundation/utilities/optional_arg.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>

namespace {

template <class To, class From>
bool out_of_range(From value) {
    bool out = false;
    EXPECT_EQ(static_cast<To>(value), ut_numeric_cast<To>(value, out));
    return out;
}

TEST(NumericCast, TellsWhatDoesNotFit) {
    EXPECT_FALSE((out_of_range<int>(std::uint64_t{2147483647})));
    EXPECT_TRUE((out_of_range<int>(std::uint64_t{2147483648})));
    EXPECT_TRUE((out_of_range<int>(UINT64_MAX)));
    EXPECT_TRUE((out_of_range<std::uint64_t>(-1)));
    EXPECT_FALSE((out_of_range<std::uint64_t>(INT_MAX)));
    EXPECT_TRUE((out_of_range<int>(std::int64_t{INT_MIN} - 1)));
    EXPECT_FALSE((out_of_range<int>(std::int64_t{INT_MIN})));
}

TEST(Compare, GoesByTrueValues) {
    EXPECT_TRUE(ut_compare(-1) < std::uint64_t{0});
    EXPECT_FALSE(ut_compare(-1) > UINT64_MAX);
    EXPECT_TRUE(ut_compare(UINT64_MAX) > -1);
    EXPECT_FALSE(ut_compare(UINT64_MAX) < INT_MIN);
    EXPECT_TRUE(ut_compare(INT_MIN) < std::int64_t{-1});
    EXPECT_FALSE(ut_compare(5) < 5u || ut_compare(5) > 5u);
}

int given(utOptionalArg<int const &> argument = {}) {
    return argument ? argument.value() : -1;
}

TEST(OptionalArg, RefersToItsObjectOrToNone) {
    int seven = 7;
    utOptionalArg<int &> const argument = seven;
    argument.value() = 8;
    EXPECT_EQ(8, seven);
    EXPECT_EQ(-1, given());
    EXPECT_EQ(8, given(seven));
    EXPECT_EQ(&seven, &*ut_make_observer(&seven));
}

} // namespace
