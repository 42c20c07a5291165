#include <datumfit/foundation/containers/quick_sort.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <vector>

namespace {

/// Sorts ints by any rule, and counts how often it asks.
struct IntSort : coQuickSort {
    explicit IntSort(std::function<int(int, int)> r) : rule(std::move(r)) {}
    int obj_compare(void * a, void * b) const override {
        ++comparisons;
        return rule(*static_cast<int *>(a), *static_cast<int *>(b));
    }
    void * arr_get(void * array, int index) const override { return static_cast<int *>(array) + index; }
    void arr_swap(void * array, int i, int j) const override {
        std::swap(static_cast<int *>(array)[i], static_cast<int *>(array)[j]);
    }
    std::function<int(int, int)> rule;
    mutable double comparisons = 0.0;
};

TEST(QuickSort, SortsAnyOrderWithinNLogN) {
    int const n = 1000000;
    std::function<int(int)> const orders[] = {[](int i) { return i; }, [](int i) { return -i; },
                                              [](int i) { return i % 2; }, [](int i) { return std::min(i, n - i); },
                                              [](int i) { return static_cast<int>(7919LL * i % 1000003); }};
    for (auto const & value : orders) {
        std::vector<int> a(n);
        for (int & element : a) element = value(static_cast<int>(&element - a.data()));
        IntSort const order([](int x, int y) { return x < y ? -1 : x > y ? 1 : 0; });
        std::vector<int> expected = a;
        std::sort(expected.begin(), expected.end());
        order.sort(a.data(), n);
        EXPECT_EQ(expected, a);
        EXPECT_LT(order.comparisons, 1.5 * n * std::log2(n));  // the worst of these takes 1.06
    }
}

TEST(QuickSort, StaysFastAgainstTheWorstOrder) {
    // An adversary that settles values only when it must, so that every pivot turns out among the least. McIlroy 1999.
    int const n = 20000;
    std::vector<int> items(n), value(n, n);
    std::iota(items.begin(), items.end(), 0);
    int settled = 0, candidate = 0;
    IntSort const order([&](int x, int y) {
        int &vx = value[static_cast<std::size_t>(x)], &vy = value[static_cast<std::size_t>(y)];
        if (vx == n && vy == n) (x == candidate ? vx : vy) = settled++;
        if (vx == n || vy == n) candidate = vx == n ? x : y;
        return vx - vy;
    });
    order.sort(items.data(), n);
    EXPECT_LT(order.comparisons, 4.0 * n * std::log2(n));  // half for divisions, half for a heap sort; it takes 3.7
    EXPECT_TRUE(std::is_sorted(items.begin(), items.end(), [&](int x, int y) { return order.rule(x, y) < 0; }));
}

TEST(QuickSort, StaysInItsRangeWhenTheComparisonContradictsItself) {
    for (int const answer : {-1, 1}) {
        std::vector<int> a(1002);
        std::iota(a.begin(), a.end(), 0);
        std::vector<int> const expected = a;
        IntSort const order([&](int x, int y) { return x % 1001 == 0 || y % 1001 == 0 ? (ADD_FAILURE(), 0) : answer; });
        order.sort(a.data() + 1, 1000);
        std::sort(a.begin() + 1, a.end() - 1);
        EXPECT_EQ(expected, a);
    }
}

TEST(QuickSortIndex, SortsIndicesByValueThenByIndexWithNaNsLast) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    doublecoPageArr const values{nan, 0.0, 2.0, -0.0, nan, -1.0, 2.0};
    intcoPageArr index{6, 5, 4, 3, 2, 1, 0}, some{2, 5, 2};
    doublecoQuickSortIndex(values, index);
    doublecoQuickSortIndex(values, some);
    std::vector<int> found(10);
    index.copyout(found.data(), 7, 0, 0);
    some.copyout(found.data(), 3, 0, 7);
    EXPECT_EQ((std::vector<int>{5, 1, 3, 2, 6, 0, 4, 5, 2, 2}), found);
}

}  // namespace
