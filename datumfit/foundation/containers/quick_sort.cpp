#include <datumfit/foundation/containers/quick_sort.h>

#include <cmath>
#include <utility>

namespace {

// Up to this length insertion costs fewer calls than further division.
constexpr int short_range = 12;

// From this length on the pivot is the median of three medians.
constexpr int long_range = 128;

/// One run of the sort over one array. Ranges are half open, from lo to before hi.
class sort_run {
public:
    sort_run(coQuickSort const & order, void * array) : order_(order), array_(array) {}

    /// Quick sort that turns to heap sort after `splits` nested divisions, which a fair division of the range never
    /// needs. It calls itself on the shorter side only, so no deeper than log2 of the length.
    void sort(int lo, int hi, int splits) const {
        while (hi - lo > short_range) {
            if (splits == 0) {
                heap_sort(lo, hi);
                return;
            }
            --splits;
            int const middle = divide(lo, hi);
            if (middle - lo < hi - middle) {
                sort(lo, middle, splits);
                lo = middle + 1;
            } else {
                sort(middle + 1, hi, splits);
                hi = middle;
            }
        }
        insertion_sort(lo, hi);
    }

private:
    void * get(int i) const { return order_.arr_get(array_, i); }
    bool before(int i, int j) const { return order_.obj_compare(get(i), get(j)) < 0; }
    void swap(int i, int j) const { order_.arr_swap(array_, i, j); }

    int median(int i, int j, int k) const {
        if (before(j, i)) {
            std::swap(i, j);
        }
        // i comes before j now.
        return before(k, j) ? (before(k, i) ? i : k) : j;
    }

    /// The ends are left out of the samples: there a division puts what it met out of order.
    int choose_pivot(int lo, int hi) const {
        if (hi - lo < long_range) {
            int const step = (hi - lo) / 4;
            return median(lo + step, lo + 2 * step, lo + 3 * step);
        }
        int const step = (hi - lo) / 10;
        auto const median_about = [&](int i) { return median(i - step, i, i + step); };
        return median(median_about(lo + 2 * step), median_about(lo + 5 * step), median_about(lo + 8 * step));
    }

    /// Divides the range about a pivot, and gives the pivot's place. Hoare 1962: both scans stop at elements equal to
    /// the pivot, so that equal elements divide evenly; and both stop at the ends, whatever the comparison says.
    int divide(int lo, int hi) const {
        int const chosen = choose_pivot(lo, hi);
        if (chosen != lo) {
            swap(lo, chosen);
        }
        void * const pivot = get(lo);  // first in the range, where no swap below moves it
        int i = lo;
        int j = hi;
        for (;;) {
            do {
                ++i;
            } while (i < hi && order_.obj_compare(get(i), pivot) < 0);
            do {
                --j;
            } while (j > lo && order_.obj_compare(get(j), pivot) > 0);
            if (i >= j) {
                break;
            }
            swap(i, j);
        }
        if (j != lo) {
            swap(lo, j);
        }
        return j;
    }

    void insertion_sort(int lo, int hi) const {
        for (int i = lo + 1; i < hi; ++i) {
            for (int j = i; j > lo && before(j, j - 1); --j) {
                swap(j - 1, j);
            }
        }
    }

    /// Lets element `root` of the heap of `length` elements from lo on sink below all that come behind it.
    void sink(int lo, int root, int length) const {
        // As long as there is a left child; written so that no number exceeds the length.
        while (root < length / 2) {
            int child = 2 * root + 1;
            if (child + 1 < length && before(lo + child, lo + child + 1)) {
                ++child;
            }
            if (!before(lo + root, lo + child)) {
                return;
            }
            swap(lo + root, lo + child);
            root = child;
        }
    }

    void heap_sort(int lo, int hi) const {
        int const length = hi - lo;
        for (int root = length / 2 - 1; root >= 0; --root) {
            sink(lo, root, length);
        }
        for (int last = length - 1; last > 0; --last) {
            swap(lo, lo + last);
            sink(lo, 0, last);
        }
    }

    coQuickSort const & order_;
    void * array_;
};

}  // namespace

void * coObjInterface::obj_create() const {
    return nullptr;
}

void * coObjInterface::obj_nil() const {
    return nullptr;
}

void coObjInterface::obj_assign(void *, void *) const {}

int coObjInterface::obj_hash(void *) const {
    return 0;
}

int coObjInterface::obj_null(void * object) const {
    return object == obj_nil() ? 1 : 0;
}

coObjInterface::~coObjInterface() = default;

void * coArrInterface::arr_create(int) const {
    return nullptr;
}

void coArrInterface::arr_destroy(void *) const {}

int coArrInterface::arr_size(void *) const {
    return 0;
}

void coArrInterface::arr_move(void *, int, int) const {}

void * coQuickSort::obj_create_copy(void * object) const {
    return object;
}

void coQuickSort::obj_destroy(void *) const {}

void coQuickSort::arr_put_copy(void *, int, void *) const {}

void coQuickSort::sort(void * array, int n) const {
    int splits = 0;
    for (int length = n; length > 1; length /= 2) {
        splits += 2;
    }
    sort_run(*this, array).sort(0, n, splits);
}

doublecoQuickSortIndex::doublecoQuickSortIndex(doublecoPageArr const & values, intcoPageArr & index) : values_(values) {
    sort(&index, index.size());
}

int doublecoQuickSortIndex::obj_compare(void * a, void * b) const {
    int const i = *static_cast<int const *>(a);
    int const j = *static_cast<int const *>(b);
    double const x = values_.read(i);
    double const y = values_.read(j);
    if (x < y || y < x) {
        return x < y ? -1 : 1;
    }
    // Equal, or at least one NaN.
    if (std::isnan(x) != std::isnan(y)) {
        return std::isnan(x) ? 1 : -1;
    }
    return i < j ? -1 : i > j ? 1 : 0;
}

void * doublecoQuickSortIndex::arr_get(void * array, int index) const {
    return &(*static_cast<intcoPageArr *>(array))[index];
}

void doublecoQuickSortIndex::arr_swap(void * array, int i, int j) const {
    intcoPageArr & indices = *static_cast<intcoPageArr *>(array);
    std::swap(indices[i], indices[j]);
}
