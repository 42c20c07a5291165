#pragma once

#include <datumfit/foundation/containers/dyn_arr.h>

/// A walk through a dynamic array that can tell whether the array has changed since it began.
template <class T>
class coDynArrcoIterator {
public:
    /// The array must outlive the iterator.
    explicit coDynArrcoIterator(coDynArr<T> const * array) : array_(array) { reset(); }

    /// Begins anew, with the array as it is now.
    void reset() {
        first_ = array_->data();
        end_ = first_ + array_->size();
        index_ = 0;
    }

    /// 1 while the array has the storage and the size that it had at the beginning, else 0.
    int invariant() const { return first_ == array_->data() && end_ - first_ == array_->size() ? 1 : 0; }

private:
    coDynArr<T> const * array_;
    T const * first_;
    T const * end_;
    int index_;
};
