#pragma once

#include <datumfit/foundation/containers/buffer_guard.h>
#include <datumfit/foundation/containers/memory.h>
#include <datumfit/foundation/utilities/numeric_cast.h>
#include <datumfit/foundation/utilities/tags.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <initializer_list>
#include <limits>
#include <memory>
#include <utility>

/// A dynamic array that grows when it is written beyond its end.
///
/// It holds `capacity` default-constructed elements, of which `size` are in use. When an index does not fit, the
/// capacity grows by the smallest whole number of steps that makes it fit: capacity 5 and step 10 grow to 15 for any
/// index from 5 to 14. The default step of 1 copies the array for each element appended, so many elements want a step,
/// or reserve().
///
/// Where memory runs out, resize(), reserve(), expand() and shrink() return 0 and the elements stay; append() leaves
/// the element out; a copy is empty; and writing beyond the end through operator[], which has no element to give, ends
/// the program: reserve() first where that must not happen. Nothing throws. Indices are not checked: the caller keeps
/// them at 0 or above, and the step at 1 or above.
///
/// Growth moves the elements, so references to them end with it. No locks: growth needs exclusive access.
template <class T>
class coDynArr {
public:
    coDynArr() = default;
    coDynArr(int capacity, int step) : step_(step) { adopt(datumfit::internal::new_elements<T>(capacity), capacity); }
    coDynArr(std::initializer_list<T> elements);

    /// A deep copy, with the capacity and the step of the other array.
    coDynArr(utCopyTag, coDynArr const & other) : step_(other.step_) {
        if (adopt(other.copied_storage(other.capacity_, other.size_), other.capacity_)) {
            size_ = other.size_;
        }
    }
    coDynArr(coDynArr const & other) : coDynArr(utCopy, other) {}
    coDynArr(coDynArr && other) noexcept : step_(other.step_) { swap(other); }
    ~coDynArr() { delete[] data_; }

    coDynArr & operator=(coDynArr const & other) { return become(utCopy, other); }
    coDynArr & operator=(coDynArr && other) noexcept {
        coDynArr taken(std::move(other));
        swap(taken);
        return *this;
    }

    int size() const { return size_; }
    int capacity() const { return capacity_; }
    int step() const { return step_; }

    /// The elements one behind the other; null while the capacity is 0.
    T * data() { return data_; }
    T const * data() const { return data_; }

    /// Element i. At or beyond the end the array is extended to i + 1 elements; those between keep what their slots
    /// hold.
    T & operator[](int i) {
        if (i >= size_) {
            if (i >= capacity_) {
                grow_for_writing(i);
            }
            size_ = i + 1;
        }
        return data_[i];
    }

    /// Element i, without growth.
    T const & operator[](int i) const { return data_[i]; }
    T const & read(int i) const { return data_[i]; }

    /// Adds a copy of x, which may be an element of this array, behind the last element.
    void append(T const & x) {
        datumfit::internal::survives([&] {
            if (size_ >= capacity_) {
                // A copy, as x may lie in the storage that goes. Besides, an x made for the call then stays in
                // registers: nothing that is not inlined takes its address.
                append_with_growth(T(x));
            } else {
                data_[size_] = x;
                ++size_;
            }
        });
    }

    /// Makes room for n elements; the size stays. 1, or 0 without memory.
    int reserve(int n) { return n > capacity_ ? resize(n - 1) : 1; }

    /// Makes room for n elements and the size at least n. 1, or 0 without memory.
    int expand(int n) {
        int const reserved = reserve(n);
        if (reserved) {
            size_ = std::max(size_, n);
        }
        return reserved;
    }

    /// Makes room for index i; the size stays. 1, or 0 without memory or when the capacity would exceed an int.
    int resize(int i) {
        if (i < capacity_) {
            return 1;
        }
        int const capacity = grown_capacity(i);
        return adopt(copied_storage(capacity, size_), capacity);
    }

    /// Drops the elements from n on. When release is not 0 the capacity becomes n too, unless it is below n already.
    /// With n 0 it is clear(release). 1, or 0 without memory for the smaller storage: the larger one is kept then.
    int shrink(int n, int release);

    /// Drops all elements, and when release is not 0 the storage too.
    void clear(int release) {
        if (release) {
            delete[] data_;
            data_ = nullptr;
            capacity_ = 0;
        }
        size_ = 0;
    }

    /// Becomes a copy of another array, with its step; the capacity stays if it suffices. Returns this array.
    coDynArr & become(utCopyTag, coDynArr const & other);

private:
    // The capacity after growth for index i, or 0 when it is no int.
    int grown_capacity(int i) const {
        int const missing = i - capacity_;
        long long const capacity = static_cast<long long>(i) - missing % step_ + step_;
        return capacity <= std::numeric_limits<int>::max() ? static_cast<int>(capacity) : 0;
    }

    // New storage with copies of the first `count` elements, or null without memory.
    std::unique_ptr<T[]> copied_storage(int capacity, int count) const {
        std::unique_ptr<T[]> storage = datumfit::internal::new_elements<T>(capacity);
        coBufferGuard<T, 0> const guard(storage.get(), capacity);
        if (!datumfit::internal::survives([&] { guard.copy(storage.get(), data_, count); })) {
            storage.reset();
        }
        return storage;
    }

    // Replaces the storage, unless there is none to replace it by: 0 then, else 1.
    int adopt(std::unique_ptr<T[]> storage, int capacity) {
        if (!storage) {
            return 0;
        }
        delete[] data_;
        data_ = storage.release();
        capacity_ = capacity;
        return 1;
    }

    // Apart from operator[], and never inlined, so that loops over elements stay short.
    [[gnu::noinline, gnu::cold]] void grow_for_writing(int i) {
        if (!resize(i)) {
            std::abort();
        }
    }

    [[gnu::noinline]] void append_with_growth(T const & x) {
        if (resize(size_)) {
            data_[size_] = x;
            ++size_;
        }
    }

    void swap(coDynArr & other) noexcept {
        std::swap(data_, other.data_);
        std::swap(capacity_, other.capacity_);
        std::swap(size_, other.size_);
        std::swap(step_, other.step_);
    }

    T * data_ = nullptr;
    int capacity_ = 0;
    int size_ = 0;
    int step_ = 1;
};

template <class T>
coDynArr<T>::coDynArr(std::initializer_list<T> elements) {
    bool too_many = false;
    int const n = ut_numeric_cast<int>(elements.size(), too_many);
    if (!too_many && reserve(n)) {
        for (T const & element : elements) {
            append(element);
        }
    }
}

template <class T>
int coDynArr<T>::shrink(int n, int release) {
    if (n <= 0) {
        clear(release);
        return 1;
    }
    int result = 1;
    if (n < capacity_ && release) {
        result = adopt(copied_storage(n, n), n);
    }
    size_ = std::min(size_, n);
    return result;
}

template <class T>
coDynArr<T> & coDynArr<T>::become(utCopyTag, coDynArr const & other) {
    if (this != &other) {
        size_ = 0;
        if (reserve(other.size_) && datumfit::internal::survives([&] {
                coBufferGuard<T, 0>(data_, capacity_).copy(data_, other.data_, other.size_);
            })) {
            size_ = other.size_;
        }
        step_ = other.step_;
    }
    return *this;
}

using doublecoDynArr = coDynArr<double>;
using intcoDynArr = coDynArr<int>;
using utBoolcoDynArr = coDynArr<int>;
using utAnycoPageArrINTERNALcoDynArr = coDynArr<void *>;
