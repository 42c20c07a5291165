#pragma once

/// A view of equally spaced doubles that owns nothing: element i is element start + stride * i of the storage.
///
/// Copying a slice makes a second view of the same elements; assigning to it writes the elements. It lives no longer
/// than the vector or matrix it views, and ends when that is resized. Indices are not checked. A slice const only
/// reads.
class mlSlice {
public:
    mlSlice(double * data, int start, int stride, int count)
        : data_(data), start_(start), count_(count), stride_(stride) {}
    mlSlice(mlSlice const &) = default;

    /// Writes the elements in ascending order, as many as this slice counts; `from` must have as many. A vector serves
    /// too, through its conversion to a slice.
    mlSlice & operator=(mlSlice const & from) {
        for (int i = 0; i < count_; ++i) {
            (*this)[i] = from[i];
        }
        return *this;
    }

    double & operator[](int i) { return data_[start_ + stride_ * i]; }
    double const & operator[](int i) const { return data_[start_ + stride_ * i]; }

    /// The address of element 0.
    double * start() { return data_ + start_; }
    double const * start() const { return data_ + start_; }

    int dimension() const { return count_; }

private:
    double * data_;
    int start_, count_, stride_;
};
