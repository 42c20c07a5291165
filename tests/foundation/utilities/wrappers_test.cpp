#include <datumfit/foundation/utilities/numeric_cast.h>
#include <datumfit/foundation/utilities/optional_arg.h>
#include <gtest/gtest.h>

#include <climits>

namespace {

template <class To, class From>
bool out_of_range(From value) {
    bool out = false;
    return ut_numeric_cast<To>(value, out) != static_cast<To>(value) || out;
}

TEST(NumericCast, TellsWhatDoesNotFit) {
    EXPECT_FALSE(out_of_range<int>(std::uint64_t{2147483647}) || out_of_range<std::uint64_t>(INT_MAX));
    EXPECT_TRUE(out_of_range<int>(std::uint64_t{2147483648}) && out_of_range<int>(UINT64_MAX));
    EXPECT_TRUE(out_of_range<std::uint64_t>(-1) && out_of_range<int>(std::int64_t{INT_MIN} - 1));
}

TEST(Compare, GoesByTrueValues) {
    EXPECT_TRUE(ut_compare(-1) < 0u && ut_compare(UINT64_MAX) > -1 && ut_compare(INT_MIN) < -1L);
    EXPECT_FALSE(ut_compare(-1) > UINT64_MAX || ut_compare(5) < 5u || ut_compare(5) > 5u);
}

int given(utOptionalArg<int const &> argument = {}) {
    return argument ? argument.value() : -1;
}

TEST(OptionalArg, RefersToItsObjectOrToNone) {
    int seven = 7;
    utOptionalArg<int &>(seven).value() = 8;
    EXPECT_EQ(8, given(seven));
    EXPECT_EQ(-1, given());
}

}  // namespace
