#include <datumfit/foundation/containers/dyn_arr_iterator.h>
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "scarce.h"

namespace {

std::vector<int> facts(intcoDynArr const & a) {
    return {a[0], a.size(), a.capacity(), a.step()};
}

TEST(DynArr, GrowsByTheSmallestNumberOfSteps) {
    int const cases[][5] = {{5, 10, 4, 5, 1}, {5, 10, 5, 15, 1}, {5, 10, 14, 15, 1},       {5, 10, 15, 25, 1},
                            {0, 1, 5, 6, 1},  {7, 3, 9, 10, 1},  {2, 3, INT_MAX - 1, 2, 0}};
    for (auto const & [capacity, step, index, grown, result] : cases) {
        intcoDynArr a(capacity, step);
        EXPECT_EQ(result, a.resize(index));
        EXPECT_EQ(grown, a.capacity()) << capacity << " by " << step << " for " << index;
    }
}

TEST(DynArr, ExtendsToWhatIsWritten) {
    coDynArr<std::string> a;
    a.reserve(0);
    EXPECT_EQ(0, a.capacity());
    std::string const x = "too long to lie within the element itself";
    a[5] = x;
    a.append(a[5]);
    EXPECT_EQ(1, a.expand(9) * a.expand(2));
    EXPECT_EQ(9, a.size());
    EXPECT_EQ(x + x, a.read(5) + a.read(6));
}

TEST(DynArr, ShrinksAndClearsWithAndWithoutItsStorage) {
    int const cases[][4] = {{2, 0, 2, 8}, {2, 1, 2, 2}, {6, 1, 3, 6}, {9, 1, 3, 8}, {0, 0, 0, 8}, {0, 1, 0, 0}};
    for (auto const & [n, release, size, capacity] : cases) {
        intcoDynArr a{1, 2, 3};
        a.reserve(8);
        EXPECT_EQ(1, a.shrink(n, release));
        EXPECT_EQ(size, a.size());
        EXPECT_EQ(capacity, a.capacity());
        EXPECT_TRUE(size == 0 || a[size - 1] == size);
    }
}

TEST(DynArr, CopiesAreDeepAndMovesLeaveAnEmptyArray) {
    intcoDynArr source(7, 3), larger(20, 5);
    source[1] = source[0] = 1;
    larger = source;
    larger.become(utCopy, larger);
    intcoDynArr exact(utCopy, source);
    source[0] = 9;
    EXPECT_EQ((std::vector<int>{1, 2, 20, 3}), facts(larger));
    EXPECT_EQ((std::vector<int>{1, 2, 7, 3}), facts(exact));
    exact = std::move(source);
    source.append(4);
    EXPECT_EQ((std::vector<int>{9, 2, 7, 3}), facts(exact));
    EXPECT_EQ((std::vector<int>{4, 1, 3, 3}), facts(source));
}

TEST(DynArr, StaysValidWhenMemoryRunsOut) {
    Scarce::allowance = 2;
    {
        coDynArr<Scarce> a(2, 2), b;
        a.append(1);
        a.append(2);
        a.append(3);
        EXPECT_EQ(2, a.size());
        EXPECT_EQ(0, a.resize(2) + a.expand(3) + a.shrink(1, 1));
        EXPECT_EQ(1, a.size());
        EXPECT_EQ(2, a.capacity());
        b = a;
        EXPECT_EQ(0, b.size() + coDynArr<Scarce>(a).size());
        Scarce::allowance = 20;
        a[0].value = 13;
        EXPECT_EQ(0, a.resize(2));
        b = a;
        b.append(a[0]);
        EXPECT_EQ(0, b.size());
    }
    EXPECT_EQ(0, Scarce::live);
}

TEST(BufferGuard, RefusesCopiesThatLeaveTheBuffer) {
    int const from[] = {1, 2, 3, 4, 5};
    int const cases[][3] = {{0, 4, 4}, {2, 2, 2}, {2, 3, 0}, {5, 1, 0}, {-1, 2, 0}, {0, -1, 0}};
    for (auto const & [to, count, copied] : cases) {
        std::vector<int> expected(7), buffer(7);
        std::copy(from, from + copied, expected.begin() + 1 + to * (copied > 0));
        coBufferGuard<int, 0> const guard(buffer.data() + 1, 4);
        guard.copy(buffer.data() + 1 + to, from, count);
        guard.copy(buffer.data() + 1, nullptr, 1);
        guard.copy(nullptr, from, 1);
        EXPECT_EQ(expected, buffer) << to << ", " << count;
    }
    EXPECT_EQ(0u, (coBufferGuard<int, 0>::convert(-1)));
}

TEST(DynArrIterator, KnowsWhetherItsArrayChanged) {
    intcoDynArr a{1, 2};
    coDynArrcoIterator<int> i(&a);
    a.reserve(3);
    EXPECT_EQ(0, i.invariant());
    i.reset();
    EXPECT_EQ(1, i.invariant());
    a.append(3);
    EXPECT_EQ(0, i.invariant());
}

}  // namespace
