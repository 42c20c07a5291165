#pragma once

#include <datumfit/foundation/geometry/xform3.h>

/// A view of a giXform3, through which the elements of its matrix are written. The transform must outlive it.
class giXform3Acc {
public:
    static giXform3Acc access(giXform3 & x) { return giXform3Acc(x); }

    /// Writes element (r, c). The transform then counts as a general one, whatever it was: an identity keeps its other
    /// elements, those of an invalid one are all to be written.
    void set_matrix_value(int r, int c, double value) const {
        x_.matrix_(r, c) = value;
        cancel_identity();
    }

    /// Makes the transform a general one of the same matrix.
    void cancel_identity() const { x_.state_ = giXform3::general; }

private:
    explicit giXform3Acc(giXform3 & x) : x_(x) {}

    giXform3 & x_;
};
