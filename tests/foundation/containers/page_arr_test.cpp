#include <datumfit/foundation/containers/page_arr_iterator.h>
#include <datumfit/foundation/containers/prf.h>

#include <gtest/gtest.h>

#include "scarce.h"

#include <numeric>
#include <vector>

namespace {

intcoPageArr counted(int n, int shift) {
    intcoPageArr a(shift, 0, 1);
    for (int i = 0; i < n; ++i) {
        a.append(i);
    }
    return a;
}

std::vector<int> contents(intcoPageArr const & a) {
    std::vector<int> all(static_cast<std::size_t>(a.size()));
    a.copyout(all.data(), a.size(), 0, 0);
    return all;
}

TEST(PageArr, NeverMovesItsElements) {
    intcoPageArr a;
    EXPECT_TRUE(a.empty());
    EXPECT_EQ(256, a.block_size());
    int * const first = &a[0];
    *first = 7;
    EXPECT_EQ(first + 255, &a[255]);
    a[256] = 8;
    for (int i = 257; i < 20000; ++i) {
        a.append(i);
    }
    EXPECT_EQ(first, &a[0]);
    EXPECT_EQ(7, a.read(0));
    EXPECT_EQ(8, a.read(256));
    EXPECT_EQ(20000, a.size());
    EXPECT_EQ(19999, a.read(19999));
    a.append(a[0]);
    a.clear(0);
    a.append(1);
    EXPECT_EQ(first, &a[0]);
    EXPECT_EQ(1, a.expand(300));
    EXPECT_EQ(1, a.reserve(400) * a.expand(2));
    EXPECT_EQ(300, a.size());
    a.append(2);
    EXPECT_EQ(2, a.read(300));
}

TEST(PageArr, CopiesBetweenAndWithinArraysOfAnyBlocks) {
    struct Case {
        int n, to, from;
    };
    for (int const shift : {0, 2, 8}) {
        for (Case const & c : {Case{7, 3, 0}, Case{7, 0, 3}, Case{20, 5, 2}, Case{10, 12, 0}, Case{4, 4, 4},
                               Case{3, 0, 12}, Case{-1, 0, 0}}) {
            intcoPageArr const source = counted(10, 2);
            intcoPageArr within = counted(10, shift), between = within;
            std::vector<int> expected = contents(source);
            expected.resize(static_cast<std::size_t>(std::max(10, c.to + std::min(c.n, 10 - c.from))));
            for (int k = 0; k < std::min(c.n, 10 - c.from); ++k) {
                expected[static_cast<std::size_t>(c.to + k)] = c.from + k;
            }
            EXPECT_EQ(1, within.copy(within, c.n, c.to, c.from));
            EXPECT_EQ(1, between.copy(source, c.n, c.to, c.from));
            for (int i = 10; i < c.to; ++i) {
                within[i] = between[i] = 0; // between the ranges nothing was written
            }
            EXPECT_EQ(expected, contents(within)) << shift << ": " << c.n << " to " << c.to << " from " << c.from;
            EXPECT_EQ(expected, contents(between));
        }
    }
}

TEST(PageArr, TakesAndGivesPlainArrays) {
    std::vector<int> plain(11);
    std::iota(plain.begin(), plain.end(), 100);
    intcoPageArr a = counted(6, 2);
    EXPECT_EQ(1, a.copyin(plain.data(), 9, 3, 2));
    EXPECT_EQ((std::vector<int>{0, 1, 2, 102, 103, 104, 105, 106, 107, 108, 109, 110}), contents(a));
    a.copyout(plain.data(), 99, 6, 4);
    EXPECT_EQ((std::vector<int>{100, 101, 102, 103, 105, 106, 107, 108, 109, 110, 110}), plain);
}

TEST(PageArr, CopiesAreDeepAndMovesLeaveAnEmptyArray) {
    intcoPageArr source = counted(9, 4);
    intcoPageArr copy(source), become = counted(300, 8);
    become.become(utCopy, source).become(utCopy, become);
    source[0] = 5;
    EXPECT_EQ(16, become.block_size());
    EXPECT_EQ(contents(counted(9, 3)), contents(copy));
    EXPECT_EQ(contents(copy), contents(become));
    copy = std::move(source);
    source.append(1);
    EXPECT_EQ(5, copy.read(0));
    EXPECT_EQ(1, source.size());
    intcoPageArr const listed{4, 5, 6};
    EXPECT_EQ((std::vector<int>{4, 5, 6}), contents(listed));
}

TEST(PageArr, RepaginatesToTheSmallestBlock) {
    struct Case {
        int shift, size, reserved, block_size, reclaimed;
    };
    for (Case const & c : {Case{8, 3, 3, 4, 252}, Case{8, 4, 600, 4, 764}, Case{8, 1, 1, 1, 255}, Case{3, 5, 20, 8, 16},
                           Case{2, 4, 9, 4, 0}, Case{8, 0, 300, 256, 512}}) {
        intcoPageArr a = counted(c.size, c.shift);
        a.reserve(c.reserved);
        EXPECT_EQ(c.reclaimed, a.repaginate());
        EXPECT_EQ(c.block_size, a.block_size());
        EXPECT_EQ(c.block_size, 1 << a.shift());
        EXPECT_EQ(contents(counted(c.size, 3)), contents(a));
        a.append(99);
        EXPECT_EQ(99, a.read(c.size));
    }
}

TEST(PageArr, FreesTheBlocksThatItGivesUp) {
    Scarce::allowance = 1000;
    {
        coPageArr<Scarce> a(2, 1, 1);
        EXPECT_EQ(1, a.expand(12));
        EXPECT_EQ(12, Scarce::live);
        EXPECT_EQ(1, a.shrink(9, 0));
        EXPECT_EQ(12, Scarce::live);
        EXPECT_EQ(1, a.shrink(8, 1));
        EXPECT_EQ(8, Scarce::live);
        a.append(Scarce(1));
        EXPECT_EQ(12, Scarce::live);
        a.clear(1);
        EXPECT_EQ(0, Scarce::live);
        a.append(Scarce(2));
        EXPECT_EQ(2, a.read(0).value);
    }
    EXPECT_EQ(0, Scarce::live);
}

TEST(PageArr, StaysValidWhenMemoryRunsOut) {
    Scarce::allowance = 14;
    {
        coPageArr<Scarce> a(2, 1, 1);
        EXPECT_EQ(0, a.expand(16));
        EXPECT_EQ(0, a.size());
        EXPECT_EQ(12, Scarce::live); // three blocks fit, and stay
        EXPECT_EQ(1, a.expand(12));
        Scarce::allowance = 0;
        a.append(1);
        EXPECT_EQ(12, a.size());
        EXPECT_EQ(0, a.copyin(&a[0], 1, 12, 0));
        a.shrink(1, 0);
        a[0].value = 5;
        EXPECT_EQ(0, a.repaginate());
        EXPECT_EQ(5, a.read(0).value);
        EXPECT_EQ(0, coPageArr<Scarce>(a).size());
        a[0].value = Scarce::unassignable;
        EXPECT_EQ(0, a.copy(a, 1, 1, 0));
        EXPECT_EQ(2, a.size());
        a.append(a[0]);
        EXPECT_EQ(2, a.size());
    }
    EXPECT_EQ(0, Scarce::live);
}

TEST(PageArr, KeepsTheCountsOfHandles) {
    auto const object = std::make_shared<int>(1);
    coPageArr<coPrf<int>> a;
    for (int i = 0; i < 5; ++i) {
        a.append(coPrf<int>(object));
    }
    coPageArr<coPrf<int>> b(a);
    EXPECT_EQ(11, object.use_count());
    EXPECT_EQ(248, a.repaginate());
    EXPECT_EQ(11, object.use_count());
    b.copy(b, 5, 2, 0);
    EXPECT_EQ(13, object.use_count());
    b.clear(1);
    EXPECT_EQ(6, object.use_count());
    a.become(utCopy, b);
    EXPECT_EQ(1, object.use_count());
}

TEST(PageArrIterator, BeginsUnlessTheArrayIsEmpty) {
    intcoPageArr a;
    coPageArrcoIterator<int> i(&a);
    EXPECT_EQ(0, i.do_first());
    a.append(1);
    i.reset();
    EXPECT_EQ(1, i.do_first());
}

} // namespace
