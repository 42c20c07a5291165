#pragma once

#include <datumfit/foundation/containers/page_arr.h>

#include <algorithm>

/// A walk through a paged array, block by block.
template <class T>
class coPageArrcoIterator {
public:
    /// The array must outlive the iterator.
    explicit coPageArrcoIterator(coPageArr<T> const * array) : array_(array) {}

    /// Goes back to before the first element.
    void reset() { count_ = 0; }

    /// Takes the first block in hand. 1, or 0 for an empty array.
    int do_first() {
        if (array_->empty()) {
            return 0;
        }
        count_ = array_->size();
        in_hand_ = std::min(count_, array_->block_size());
        block_ = &array_->read(0);
        return 1;
    }

private:
    coPageArr<T> const * array_;
    int count_ = 0;
    int in_hand_ = 0;
    T const * block_ = nullptr;
};
