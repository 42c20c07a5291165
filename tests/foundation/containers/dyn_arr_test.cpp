#include <datumfit/foundation/containers/dyn_arr_iterator.h>

#include <gtest/gtest.h>

#include "scarce.h"

#include <climits>
#include <string>
#include <vector>

namespace {

std::vector<int> contents(intcoDynArr const & a) {
    return std::vector<int>(a.data(), a.data() + a.size());
}

TEST(DynArr, GrowsByTheSmallestNumberOfSteps) {
    struct Case {
        int capacity, step, index, grown;
    };
    for (Case const & c : {Case{5, 10, 4, 5}, Case{5, 10, 5, 15}, Case{5, 10, 14, 15}, Case{5, 10, 15, 25},
                           Case{0, 1, 5, 6}, Case{0, 4, 0, 4}, Case{0, 4, 4, 8}, Case{7, 3, 9, 10}}) {
        intcoDynArr a(c.capacity, c.step);
        EXPECT_EQ(1, a.resize(c.index));
        EXPECT_EQ(c.grown, a.capacity()) << c.capacity << " by " << c.step << " for " << c.index;
        EXPECT_EQ(0, a.size());
    }
}

TEST(DynArr, ExtendsToWhatIsWritten) {
    coDynArr<std::string> a;
    std::string const x = "too long to lie within the element itself";
    a[5] = x;
    EXPECT_EQ(6, a.size());
    EXPECT_EQ(6, a.capacity());
    a.append(a[5]);
    a.append(a[6]);
    a[2] = "c";
    EXPECT_EQ(8, a.size());
    EXPECT_EQ("c", a.read(2));
    EXPECT_EQ(x, a.read(5));
    EXPECT_EQ(x, a.read(7));
}

TEST(DynArr, ReservesAndExpandsWithoutLosingElements) {
    intcoDynArr a;
    EXPECT_EQ(1, a.reserve(0));
    EXPECT_EQ(nullptr, a.data());
    a = {1, 2, 3};
    EXPECT_EQ(1, a.expand(2));
    EXPECT_EQ((std::vector<int>{1, 2, 3}), contents(a));
    EXPECT_EQ(1, a.reserve(10));
    EXPECT_EQ((std::vector<int>{1, 2, 3}), contents(a));
    EXPECT_EQ(1, a.expand(10));
    EXPECT_EQ(10, a.size());
    EXPECT_EQ(10, a.capacity());
}

TEST(DynArr, ShrinksAndClearsWithAndWithoutItsStorage) {
    struct Case {
        int n, release, size, capacity;
    };
    for (Case const & c : {Case{2, 0, 2, 8}, Case{2, 1, 2, 2}, Case{6, 1, 4, 6}, Case{9, 1, 4, 8}, Case{0, 0, 0, 8},
                           Case{0, 1, 0, 0}}) {
        intcoDynArr a(8, 1);
        a.become(utCopy, {1, 2, 3, 4});
        EXPECT_EQ(1, a.shrink(c.n, c.release));
        EXPECT_EQ(c.size, a.size());
        EXPECT_EQ(c.capacity, a.capacity());
        a.append(9);
        EXPECT_EQ(9, a.read(c.size));
        EXPECT_TRUE(c.size < 2 || a.read(1) == 2);
    }
}

TEST(DynArr, CopiesAreDeepAndMovesLeaveAnEmptyArray) {
    intcoDynArr source(7, 3);
    source.become(utCopy, {1, 2, 3});
    intcoDynArr const exact(utCopy, source);
    EXPECT_EQ(7, exact.capacity());
    EXPECT_EQ(1, exact.step());
    intcoDynArr larger(20, 5);
    larger[4] = 1;
    larger = source;
    source[0] = 9;
    EXPECT_EQ(20, larger.capacity());
    EXPECT_EQ(1, larger.step());
    larger = *&larger;
    EXPECT_EQ((std::vector<int>{1, 2, 3}), contents(larger));
    EXPECT_EQ((std::vector<int>{1, 2, 3}), contents(exact));
    intcoDynArr moved(std::move(larger));
    larger = std::move(source);
    source.append(4);
    EXPECT_EQ((std::vector<int>{1, 2, 3}), contents(moved));
    EXPECT_EQ((std::vector<int>{9, 2, 3}), contents(larger));
    EXPECT_EQ((std::vector<int>{4}), contents(source));
}

TEST(DynArr, RefusesACapacityBeyondAnInt) {
    intcoDynArr a(2, 3);
    a.append(1);
    EXPECT_EQ(0, a.resize(INT_MAX));
    EXPECT_EQ(0, a.resize(INT_MAX - 1));
    EXPECT_EQ(0, a.expand(INT_MAX));
    EXPECT_EQ((std::vector<int>{1}), contents(a));
    EXPECT_EQ(2, a.capacity());
}

TEST(DynArr, StaysValidWhenMemoryRunsOut) {
    Scarce::allowance = 2;
    {
        coDynArr<Scarce> a(2, 2);
        a.append(1);
        a.append(2);
        EXPECT_EQ(0, a.resize(2));
        EXPECT_EQ(0, a.expand(3));
        a.append(3);
        EXPECT_EQ(2, a.size());
        EXPECT_EQ(0, a.shrink(1, 1));
        EXPECT_EQ(1, a.size());
        EXPECT_EQ(2, a.capacity());
        EXPECT_EQ(1, a.read(0).value);
        coDynArr<Scarce> b(a);
        b = a;
        EXPECT_EQ(0, b.size() + b.capacity());
        EXPECT_EQ(2, Scarce::live);
    }
    EXPECT_EQ(0, Scarce::live);
}

TEST(DynArr, StaysValidWhenAnElementCannotBeCopied) {
    Scarce::allowance = 20;
    {
        coDynArr<Scarce> a(2, 1), b;
        a.append(1);
        a[1].value = Scarce::unassignable;
        EXPECT_EQ(0, a.resize(2));
        EXPECT_EQ(2, a.capacity());
        b = a;
        EXPECT_EQ(0, b.size());
        b.append(a[1]);
        EXPECT_EQ(0, b.size());
        b.append(a[0]);
        EXPECT_EQ(1, b.read(0).value);
    }
    EXPECT_EQ(0, Scarce::live);
}

TEST(BufferGuard, RefusesCopiesThatLeaveTheBuffer) {
    int const from[] = {1, 2, 3, 4, 5};
    struct Case {
        int to, count, copied;
    };
    for (Case const & c : {Case{0, 4, 4}, Case{2, 2, 2}, Case{2, 3, 0}, Case{4, 1, 0}, Case{5, 1, 0}, Case{-1, 2, 0},
                           Case{0, -1, 0}, Case{0, 0, 0}}) {
        int buffer[8] = {};
        coBufferGuard<int, 0> const guard(buffer + 2, 4);
        guard.copy(buffer + 2 + c.to, from, c.count);
        guard.copy(buffer + 2, nullptr, 1);
        guard.copy(nullptr, from, 1);
        guard.copy(buffer + 2, from, std::size_t{5});
        std::vector<int> expected(8, 0);
        std::copy(from, from + c.copied, expected.begin() + 2 + c.to * (c.copied > 0));
        EXPECT_EQ(expected, std::vector<int>(buffer, buffer + 8)) << c.to << ", " << c.count;
    }
}

TEST(BufferGuard, TakesNegativeCountsAsNone) {
    EXPECT_EQ(0u, (coBufferGuard<int, 0>::convert(-1)));
    EXPECT_EQ(7u, (coBufferGuard<int, 0>::convert(7)));
}

TEST(DynArrIterator, KnowsWhetherItsArrayChanged) {
    intcoDynArr a{1, 2};
    coDynArrcoIterator<int> i(&a);
    EXPECT_EQ(1, i.invariant());
    a.append(3);
    EXPECT_EQ(0, i.invariant());
    i.reset();
    EXPECT_EQ(1, i.invariant());
    a.reserve(10);
    EXPECT_EQ(0, i.invariant());
    i.reset();
    a.shrink(2, 0);
    EXPECT_EQ(0, i.invariant());
}

} // namespace
