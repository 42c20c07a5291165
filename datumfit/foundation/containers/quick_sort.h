#pragma once

#include <datumfit/foundation/containers/page_arr.h>

/// Untyped objects, as a container sees them through their addresses. The slots with a default make no object and do
/// nothing.
class coObjInterface {
public:
    virtual void * obj_create() const;
    virtual void * obj_nil() const;
    virtual void * obj_create_copy(void * object) const = 0;
    virtual void obj_assign(void * to, void * from) const;

    /// Below 0 when a comes before b, above 0 when it comes after, 0 when either order will do.
    virtual int obj_compare(void * a, void * b) const = 0;
    virtual int obj_hash(void * object) const;

    /// 1 for the nil object, else 0.
    virtual int obj_null(void * object) const;
    virtual void obj_destroy(void * object) const = 0;
    virtual ~coObjInterface();
};

/// An array of untyped objects. The slots with a default make no array and do nothing.
class coArrInterface {
public:
    virtual void * arr_create(int size) const;
    virtual void arr_destroy(void * array) const;
    virtual int arr_size(void * array) const;
    virtual void arr_put_copy(void * array, int index, void * object) const = 0;

    /// The object at an index. While elements are swapped the address may stay with the place or go with the object.
    virtual void * arr_get(void * array, int index) const = 0;
    virtual void arr_swap(void * array, int i, int j) const = 0;
    virtual void arr_move(void * array, int to, int from) const;

protected:
    ~coArrInterface() = default;
};

/// A sort of whatever array a derived class can compare and swap: it supplies obj_compare, arr_get and arr_swap.
///
/// The sort works in place, so the copies that its own slots stand for are never made. It takes at most a constant
/// times n log n comparisons and swaps, whatever the order at the start, and stays within its range also when the
/// comparison contradicts itself. The same input gives the same order, but equal elements may change places. Musser
/// 1997.
class coQuickSort : public coObjInterface, public coArrInterface {
public:
    /// The object itself: nothing is copied.
    void * obj_create_copy(void * object) const override;
    void obj_destroy(void * object) const override;
    void arr_put_copy(void * array, int index, void * object) const override;

    /// Brings elements 0 to n - 1 into ascending order.
    void sort(void * array, int n) const;
};

/// Sorts an array of indices by the values that they point at: its constructor does the work.
class doublecoQuickSortIndex : public coQuickSort {
public:
    /// Brings the indices that the array holds, all or some of those of the values and in any order, into ascending
    /// order of their values, NaNs behind all numbers. Equal values come in ascending order of their indices.
    doublecoQuickSortIndex(doublecoPageArr const & values, intcoPageArr & index);

    int obj_compare(void * a, void * b) const override;
    void * arr_get(void * array, int index) const override;
    void arr_swap(void * array, int i, int j) const override;

private:
    doublecoPageArr const & values_;
};
