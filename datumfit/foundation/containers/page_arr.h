#pragma once

#include <datumfit/foundation/containers/buffer_guard.h>
#include <datumfit/foundation/containers/dyn_arr.h>
#include <datumfit/foundation/containers/memory.h>
#include <datumfit/foundation/utilities/numeric_cast.h>
#include <datumfit/foundation/utilities/tags.h>

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <limits>
#include <memory>
#include <utility>

/// A paged array: it grows without moving its elements, so references to them survive.
///
/// The elements lie in blocks of 2 to the power `shift` of them: element i in block i >> shift, at the position that
/// the low bits of i tell. A table holds the addresses of the blocks; only the table is ever moved.
///
/// Where memory runs out, reserve(), expand(), shrink() and get_block() return 0, and so do copy(), copyin() and
/// copyout() when an element can't be assigned; the array stays valid. append() leaves the element out; a copy is
/// empty; and writing beyond the end through operator[], which has no element to give, ends the program: reserve()
/// first where that must not happen. Nothing throws. Indices are not checked: the caller keeps them at 0 or above.
///
/// No locks: const reads may go on side by side, growth needs exclusive access.
template <class T>
class coPageArr {
public:
    /// An empty array with blocks of 256 elements.
    coPageArr() : coPageArr(8, 5, 10) {}

    /// An empty array with blocks of 2 to the power shift (0 to 30), and room in the table for table_capacity of them.
    coPageArr(int shift, int table_capacity, int table_step)
        : block_size_(1 << shift), shift_(shift), table_(table_capacity, table_step) {}
    coPageArr(std::initializer_list<T> elements);

    /// A deep copy, with blocks of the same size.
    coPageArr(utCopyTag, coPageArr const & other) : coPageArr(other.shift_, other.blocks_, 10) { copy_all(other); }
    coPageArr(coPageArr const & other) : coPageArr(utCopy, other) {}
    coPageArr(coPageArr && other) noexcept : coPageArr(other.shift_, 0, other.table_.step()) { swap(other); }
    ~coPageArr() { free_blocks(0); }

    coPageArr & operator=(coPageArr const & other) { return become(utCopy, other); }
    coPageArr & operator=(coPageArr && other) noexcept {
        coPageArr taken(std::move(other));
        swap(taken);
        return *this;
    }

    int size() const { return size_; }
    bool empty() const { return size_ == 0; }
    int block_size() const { return block_size_; }
    int shift() const { return shift_; }

    /// Element i. At or beyond the end the array is extended to i + 1 elements; those between keep what their slots
    /// hold.
    T & operator[](int i) {
        if (i >= size_) {
            if (i >> shift_ >= blocks_) {
                grow_for_writing(i);
            }
            size_ = i + 1;
        }
        return block(i >> shift_)[i & (block_size_ - 1)];
    }

    /// Element i, without growth.
    T const & operator[](int i) const { return block(i >> shift_)[i & (block_size_ - 1)]; }
    T const & read(int i) const { return (*this)[i]; }

    /// Adds a copy of x, which may be an element of this array, behind the last element.
    void append(T const & x) {
        int const b = size_ >> shift_;
        if (b != current_index_ && !get_block(b)) {
            return;
        }
        if (datumfit::internal::survives([&] { current_block_[size_ & (block_size_ - 1)] = x; })) {
            ++size_;
        }
    }

    /// Makes blocks up to number b and makes b the current one. 1, or 0 without memory: the blocks made so far stay.
    int get_block(int b);

    /// Makes room for n elements; the size stays. 1, or 0 without memory.
    int reserve(int n) { return n > 0 ? get_block((n - 1) >> shift_) : 1; }

    /// Makes room for n elements and the size at least n. 1, or 0 without memory.
    int expand(int n) {
        int const reserved = reserve(n);
        if (reserved) {
            size_ = std::max(size_, n);
        }
        return reserved;
    }

    /// Makes block b, which must be there, the current one: append() goes on in it without a look at the table.
    void switch_block(int b) {
        current_index_ = b;
        current_block_ = block(b);
    }

    /// Drops all elements, and when release is not 0 all blocks and the table too.
    void clear(int release);

    /// Drops the elements from n on, and when release is not 0 the blocks beyond them too. 1, or 0 when the table could
    /// not be made smaller.
    int shrink(int n, int release);

    /// Becomes a copy of another array, with blocks of its size. Returns this array.
    coPageArr & become(utCopyTag, coPageArr const & other);

    /// Copies n elements, or as many as the other array has, from its position `from` on to position `to` of this one,
    /// which grows as needed. The other may be this array, and the ranges may overlap. 1, or 0 without memory.
    int copy(coPageArr const & other, int n, int to, int from);

    /// Copies n elements from position `from` of a plain array to position `to` of this one, which grows as needed. 1,
    /// or 0 without memory.
    int copyin(T const * source, int n, int to, int from);

    /// Copies n elements, or as many as there are, from position `from` on to position `to` of a plain array. 1, or 0
    /// when an element could not be assigned.
    int copyout(T * target, int n, int from, int to) const;

    /// Gives back memory that an array of less than one block does not need: the one block left is as small a power of
    /// 2 as holds the elements. References to them end. Returns how many slots fewer the blocks have: 0 for a size of a
    /// block or more, or without memory for the smaller block.
    int repaginate();

private:
    T * block(int b) const { return static_cast<T *>(table_.read(b)); }

    // The number of blocks that hold n elements.
    int blocks_for(int n) const { return n > 0 ? ((n - 1) >> shift_) + 1 : 0; }

    // Makes room for n elements from position `to` on.
    int expand_at(int to, int n) { return n <= std::numeric_limits<int>::max() - to ? expand(to + n) : 0; }

    void free_blocks(int from) {
        for (int b = from; b < blocks_; ++b) {
            delete[] block(b);
        }
        blocks_ = std::min(blocks_, from);
    }

    // Copies the elements of another array into this empty one; without memory this one stays empty.
    void copy_all(coPageArr const & other) {
        if (!copy(other, other.size_, 0, 0)) {
            clear(1);
        }
    }

    // Apart from operator[], and never inlined, so that loops over elements stay short.
    [[gnu::noinline, gnu::cold]] void grow_for_writing(int i) {
        if (!get_block(i >> shift_)) {
            std::abort();
        }
    }

    void swap(coPageArr & other) noexcept {
        std::swap(blocks_, other.blocks_);
        std::swap(size_, other.size_);
        std::swap(block_size_, other.block_size_);
        std::swap(shift_, other.shift_);
        std::swap(table_, other.table_);
        std::swap(current_index_, other.current_index_);
        std::swap(current_block_, other.current_block_);
    }

    int blocks_ = 0;
    int size_ = 0;
    int block_size_;
    int shift_;
    utAnycoPageArrINTERNALcoDynArr table_;  // as long as there are blocks
    int current_index_ = -1;                // the block used last, -1 for none
    T * current_block_ = nullptr;
};

template <class T>
coPageArr<T>::coPageArr(std::initializer_list<T> elements) : coPageArr() {
    bool too_many = false;
    int const n = ut_numeric_cast<int>(elements.size(), too_many);
    if (!too_many && reserve(n)) {
        for (T const & element : elements) {
            append(element);
        }
    }
}

template <class T>
int coPageArr<T>::get_block(int b) {
    if (!table_.resize(b)) {
        return 0;
    }
    while (blocks_ <= b) {
        std::unique_ptr<T[]> elements = datumfit::internal::new_elements<T>(block_size_);
        if (!elements) {
            return 0;
        }
        table_.append(elements.release());
        ++blocks_;
    }
    switch_block(b);
    return 1;
}

template <class T>
void coPageArr<T>::clear(int release) {
    size_ = 0;
    if (release) {
        free_blocks(0);
        table_.clear(release);
        current_index_ = -1;
        current_block_ = nullptr;
    }
}

template <class T>
int coPageArr<T>::shrink(int n, int release) {
    size_ = std::min(size_, std::max(n, 0));
    if (!release) {
        return 1;
    }
    free_blocks(blocks_for(n));
    if (current_index_ >= blocks_) {
        current_index_ = -1;
        current_block_ = nullptr;
    }
    return table_.shrink(blocks_, release);
}

template <class T>
coPageArr<T> & coPageArr<T>::become(utCopyTag, coPageArr const & other) {
    if (this != &other) {
        clear(1);
        table_.reserve(other.blocks_);
        block_size_ = other.block_size_;
        shift_ = other.shift_;
        copy_all(other);
    }
    return *this;
}

template <class T>
int coPageArr<T>::copy(coPageArr const & other, int n, int to, int from) {
    int const count = std::min(n, other.size_ - from);
    if (count <= 0) {
        return 1;
    }
    if (!expand_at(to, count)) {
        return 0;
    }
    bool const backwards = this == &other && from < to;
    return datumfit::internal::survives([&] {
        for (int k = 0; k < count; ++k) {
            int const i = backwards ? count - 1 - k : k;
            block((to + i) >> shift_)[(to + i) & (block_size_ - 1)] = other.read(from + i);
        }
    });
}

template <class T>
int coPageArr<T>::copyin(T const * source, int n, int to, int from) {
    if (n <= 0) {
        return 1;
    }
    if (!expand_at(to, n)) {
        return 0;
    }
    return datumfit::internal::survives([&] {
        for (int done = 0, run = 0; done < n; done += run) {
            int const offset = (to + done) & (block_size_ - 1);
            T * const start = block((to + done) >> shift_);
            run = std::min(n - done, block_size_ - offset);
            coBufferGuard<T, 0>(start, block_size_).copy(start + offset, source + from + done, run);
        }
    });
}

template <class T>
int coPageArr<T>::copyout(T * target, int n, int from, int to) const {
    int const count = std::min(n, size_ - from);
    coBufferGuard<T, 0> const guard(target + to, count);
    return datumfit::internal::survives([&] {
        for (int done = 0, run = 0; done < count; done += run) {
            int const offset = (from + done) & (block_size_ - 1);
            run = std::min(count - done, block_size_ - offset);
            guard.copy(target + to + done, block((from + done) >> shift_) + offset, run);
        }
    });
}

template <class T>
int coPageArr<T>::repaginate() {
    if (size_ >= block_size_) {
        return 0;
    }
    int reclaimed = block_size_ * blocks_;
    if (size_ == 0) {
        clear(1);
        return reclaimed;
    }
    int smallest = 0;
    while (1 << smallest < size_) {
        ++smallest;
    }
    reclaimed -= 1 << smallest;
    if (smallest == shift_) {
        shrink(size_, 1);
        return reclaimed;
    }
    coPageArr smaller(smallest, 0, table_.step());
    if (!smaller.copyin(block(0), size_, 0, 0)) {
        return 0;
    }
    swap(smaller);
    return reclaimed;
}

using doublecoPageArr = coPageArr<double>;
using intcoPageArr = coPageArr<int>;
