#include <datumfit/foundation/containers/page_arr_iterator.h>
#include <datumfit/foundation/containers/prf.h>
#include <gtest/gtest.h>

#include <vector>

#include "scarce.h"

namespace {

intcoPageArr counted(int n, int shift) {
    intcoPageArr a(shift, 0, 1);
    for (int i = 0; i < n; ++i) a.append(i);
    return a;
}

std::vector<int> contents(intcoPageArr const & a) {
    std::vector<int> all(static_cast<std::size_t>(a.size()));
    a.copyout(all.data(), a.size(), 0, 0);
    return all;
}

TEST(PageArr, NeverMovesItsElements) {
    intcoPageArr a{7};
    int * const first = &a[0];
    EXPECT_EQ(first + 255, &a[255]);
    for (int i = 256; i < 20000; ++i) (i % 2 ? a[i] : (a.append(0), a[i])) = i;
    EXPECT_EQ(first, &a[0]);
    EXPECT_EQ(7, a.read(0));
    EXPECT_EQ(256, a.read(256));
    EXPECT_EQ(19999, a.read(19999));
    a.clear(0);
    a.append(1);
    EXPECT_EQ(1, *first);
    EXPECT_EQ(1, a.expand(300) * a.reserve(400) * a.expand(2));
    EXPECT_EQ(300, a.size());
}

TEST(PageArr, CopiesBetweenAndWithinArraysOfAnyBlocks) {
    struct {
        int n, to, from;
        std::vector<int> copied;
    } const cases[] = {{3, 1, 0, {0, 0, 1, 2, 4}},       {3, 0, 1, {1, 2, 3, 3, 4}}, {9, 0, 3, {3, 4, 2, 3, 4}},
                       {9, 3, 1, {0, 1, 2, 1, 2, 3, 4}}, {2, 0, 8, {0, 1, 2, 3, 4}}, {-1, 0, 0, {0, 1, 2, 3, 4}}};
    for (auto const & c : cases) {
        for (int const shift : {0, 1, 8}) {
            intcoPageArr within = counted(5, shift), between = within;
            EXPECT_EQ(1, within.copy(within, c.n, c.to, c.from) * between.copy(counted(5, 2), c.n, c.to, c.from));
            EXPECT_EQ(c.copied, contents(within)) << c.n << " to " << c.to << " from " << c.from;
            EXPECT_EQ(c.copied, contents(between));
        }
    }
}

TEST(PageArr, TakesAndGivesPlainArrays) {
    int plain[] = {100, 101, 102, 103, 104, 105};
    intcoPageArr a = counted(3, 1);
    EXPECT_EQ(1, a.copyin(plain, 5, 2, 1));
    EXPECT_EQ((std::vector<int>{0, 1, 101, 102, 103, 104, 105}), contents(a));
    a.copyout(plain, 99, 4, 1);
    EXPECT_EQ((std::vector<int>{100, 103, 104, 105, 104, 105}), std::vector<int>(plain, plain + 6));
}

TEST(PageArr, CopiesAreDeepAndMovesLeaveAnEmptyArray) {
    intcoPageArr source = counted(9, 4), copy = counted(300, 8);
    copy.become(utCopy, source).become(utCopy, copy);
    source[0] = 5;
    EXPECT_EQ(16, copy.block_size());
    EXPECT_EQ(contents(counted(9, 3)), contents(copy));
    copy = std::move(source);
    source.append(1);
    EXPECT_EQ(5, copy.read(0));
    EXPECT_EQ(std::vector<int>{1}, contents(source));
}

TEST(PageArr, RepaginatesToTheSmallestBlock) {
    int const cases[][5] = {
        {8, 3, 3, 4, 252}, {8, 4, 600, 4, 764}, {3, 5, 20, 8, 16}, {2, 4, 9, 4, 0}, {8, 0, 300, 256, 512}};
    for (auto const & [shift, size, reserved, block_size, reclaimed] : cases) {
        intcoPageArr a = counted(size, shift);
        a.reserve(reserved);
        EXPECT_EQ(reclaimed, a.repaginate());
        EXPECT_EQ(block_size, a.block_size());
        EXPECT_EQ(block_size, 1 << a.shift());
        a.append(size);
        EXPECT_EQ(contents(counted(size + 1, 3)), contents(a));
    }
}

TEST(PageArr, StaysValidWhenMemoryRunsOutAndFreesWhatItGivesUp) {
    Scarce::allowance = 14;
    {
        coPageArr<Scarce> a(2, 1, 1);
        EXPECT_EQ(0, a.expand(16) + a.size());
        EXPECT_EQ(12, Scarce::live);  // three blocks fit, and stay
        EXPECT_EQ(2, a.expand(12) + a.shrink(8, 1));
        EXPECT_EQ(8, Scarce::live);
        a.append(1);
        EXPECT_EQ(0, a.copyin(&a[0], 1, 8, 0));
        EXPECT_EQ(8, a.size());
        a.shrink(1, 0);
        Scarce::allowance = 0;
        EXPECT_EQ(0, a.repaginate() + coPageArr<Scarce>(a).size());
        a[0].value = 13;
        EXPECT_EQ(0, a.copy(a, 1, 1, 0));
        a.append(a[0]);
        EXPECT_EQ(2, a.size());
        Scarce::allowance = 4;
        a.clear(1);
        a.append(2);
        EXPECT_EQ(2 + 4, a.read(0).value + Scarce::live);
    }
    EXPECT_EQ(0, Scarce::live);
}

TEST(PageArr, KeepsTheCountsOfHandles) {
    auto const object = std::make_shared<int>(1);
    coPageArr<coPrf<int>> a{object, object, object, object, object}, b(a);
    EXPECT_EQ(248, a.repaginate());
    EXPECT_EQ(11, object.use_count());
    b.copy(b, 5, 2, 0);
    EXPECT_EQ(13, object.use_count());
    b.clear(1);
    a.become(utCopy, b);
    EXPECT_EQ(1, object.use_count());
    coPageArrcoIterator<coPrf<int>> i(&a);
    EXPECT_EQ(0, i.do_first());
    a.append(object);
    EXPECT_EQ(1, i.do_first());
}

}  // namespace
