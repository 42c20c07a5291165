#pragma once

#include <datumfit/foundation/maths/matrix.h>
#include <datumfit/foundation/maths/random.h>

#include <algorithm>
#include <cmath>

inline mlMatrix product(mlMatrix const & a, mlMatrix const & b) {
    return mlMatrix(mlMatrixProduct, a, b);
}

inline mlMatrix transposed(mlMatrix const & m) {
    return mlMatrix(mlMatrixTranspose, m);
}

inline mlMatrix diagonal_matrix(mlSlice const & values) {
    mlMatrix m(mlMatrixZero, values.dimension(), values.dimension());
    m.diagonal() = values;
    return m;
}

inline mlMatrix random_matrix(int rows, int cols, mlRandom & random) {
    mlMatrix m(rows, cols);
    std::generate_n(m.row_data(0), rows * cols, [&] { return random.minus_one_one(); });
    return m;
}

// Of two matrices of one shape.
inline double largest_difference(mlMatrix const & a, mlMatrix const & b) {
    double largest = 0.0;
    for (int i = 0; i < a.rows() * a.cols(); ++i) {
        largest = std::max(largest, std::fabs(a.row_data(0)[i] - b.row_data(0)[i]));
    }
    return largest;
}
