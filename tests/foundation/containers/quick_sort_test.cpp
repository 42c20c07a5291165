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
class IntSort : public coQuickSort {
public:
    explicit IntSort(std::function<int(int, int)> rule) : rule_(std::move(rule)) {}
    int obj_compare(void * a, void * b) const override {
        ++comparisons;
        return rule_(*static_cast<int *>(a), *static_cast<int *>(b));
    }
    void * arr_get(void * array, int index) const override { return static_cast<int *>(array) + index; }
    void arr_swap(void * array, int i, int j) const override {
        std::swap(static_cast<int *>(array)[i], static_cast<int *>(array)[j]);
    }
    mutable double comparisons = 0.0;

private:
    std::function<int(int, int)> rule_;
};

TEST(QuickSort, SortsAnyOrderWithinNLogN) {
    int const n = 1000000;
    struct Case {
        char const * name;
        std::function<int(int)> value;
    };
    for (Case const & c : {Case{"sorted", [](int i) { return i; }}, Case{"reversed", [](int i) { return -i; }},
                           Case{"equal", [](int) { return 3; }}, Case{"two values", [](int i) { return i % 2; }},
                           Case{"organ pipe", [](int i) { return std::min(i, n - i); }},
                           Case{"mixed", [](int i) { return static_cast<int>(2654435761LL * i % 1000003); }}}) {
        SCOPED_TRACE(c.name);
        std::vector<int> a(n);
        for (int i = 0; i < n; ++i) {
            a[static_cast<std::size_t>(i)] = c.value(i);
        }
        std::vector<int> expected = a;
        std::sort(expected.begin(), expected.end());
        IntSort const order([](int x, int y) { return x < y ? -1 : x > y ? 1 : 0; });
        order.sort(a.data(), n);
        EXPECT_EQ(expected, a);
        EXPECT_LT(order.comparisons, 1.5 * n * std::log2(n)); // the worst of these takes 1.05
    }
}

TEST(QuickSort, StaysFastAgainstTheWorstOrder) {
    // An adversary that settles values only when it must, so that every pivot turns out among the least. McIlroy 1999.
    int const n = 20000, gas = n;
    std::vector<int> value(static_cast<std::size_t>(n), gas), items(value.size());
    std::iota(items.begin(), items.end(), 0);
    int settled = 0, candidate = 0;
    IntSort const order([&](int x, int y) {
        auto value_of = [&](int item) -> int & { return value[static_cast<std::size_t>(item)]; };
        if (value_of(x) == gas && value_of(y) == gas) {
            value_of(x == candidate ? x : y) = settled++;
        }
        if (value_of(x) == gas) {
            candidate = x;
        } else if (value_of(y) == gas) {
            candidate = y;
        }
        return value_of(x) - value_of(y);
    });
    order.sort(items.data(), n);
    EXPECT_LT(order.comparisons, 4.0 * n * std::log2(n)); // half for divisions, half for a heap sort; it takes 3.7
    for (int i = 1; i < n; ++i) {
        EXPECT_LE(value[static_cast<std::size_t>(items[static_cast<std::size_t>(i - 1)])],
                  value[static_cast<std::size_t>(items[static_cast<std::size_t>(i)])]);
    }
}

TEST(QuickSort, StaysInItsRangeWhenTheComparisonContradictsItself) {
    for (int const answer : {-1, 1}) {
        std::vector<int> a(1002, -5), expected;
        std::iota(a.begin() + 1, a.end() - 1, 0);
        expected = a;
        IntSort const order([&](int x, int y) { return x < 0 || y < 0 ? (ADD_FAILURE(), 0) : answer; });
        order.sort(a.data() + 1, 1000);
        order.sort(a.data() + 1, 0);
        std::sort(a.begin() + 1, a.end() - 1);
        EXPECT_EQ(expected, a);
    }
}

TEST(QuickSortIndex, SortsIndicesByValueThenByIndexWithNaNsLast) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    doublecoPageArr values;
    intcoPageArr index;
    for (int i = 0; i < 2000; ++i) {
        values.append(i % 100 == 7 ? nan : i % 10 == 0 ? -0.0 : i % 10 == 1 ? 0.0 : std::sin(i % 50));
        index.append(1999 - i);
    }
    doublecoQuickSortIndex(values, index);
    std::vector<int> expected(2000), found(2000);
    std::iota(expected.begin(), expected.end(), 0);
    std::stable_sort(expected.begin(), expected.end(), [&](int a, int b) {
        double const x = values.read(a), y = values.read(b);
        return x < y || (!std::isnan(x) && std::isnan(y));
    });
    index.copyout(found.data(), 2000, 0, 0);
    EXPECT_EQ(expected, found);

    intcoPageArr some{5, 3, 5, 0};
    doublecoQuickSortIndex({0.5, 9.0, 9.0, 0.25, 9.0, -1.0}, some);
    EXPECT_EQ((std::vector<int>{5, 5, 3, 0}), (std::vector<int>{some[0], some[1], some[2], some[3]}));
}

} // namespace
