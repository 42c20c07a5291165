#pragma once

#include <datumfit/foundation/maths/matrix.h>
#include <datumfit/foundation/maths/vector.h>

#include <cstddef>
#include <vector>

namespace datumfit {
namespace internal {

/// x meets a row when n * x falls short of v by at most this share of |x|, with |n| = 1. A product of 12 factors is
/// good to 3e-15 of that, a vertex of 12 rows to a few times more.
constexpr double met_share = 1e-14;

/// Rows that can be met together when each gives way by this much are not in conflict: bands of no width, from
/// coordinates of up to 1e3, differ by so much through rounding alone. In the unit of x, far below what is measured.
constexpr double negligible_gap = 1e-12;

/// Rows of linear constraints K x >= d, each divided by its length: n * x >= v with |n| = 1. So the violation v - n * x
/// is a distance in the space of x, whatever the scale of the row.
///
/// A row shorter than 1e-14 of the longest, or than 1e-150, is what rounding leaves of a zero row. It bounds nothing,
/// and neither does one with |v| above 1e100; if d is above negligible_gap, or v above 1e100, no x meets such a row.
class half_spaces {
public:
    /// d has as many elements as K has rows. Numbers and squared lengths of rows are finite.
    half_spaces(mlMatrix const & K, mlVector const & d);

    int rows() const { return rows_; }
    int unknowns() const { return unknowns_; }
    void copy_normal(int i, double * n) const;

    /// n * x of row i, 0 where nothing is bounded.
    double product(int i, double const * x) const;

    /// v for each row, -infinity where nothing is bounded. Some more of these follow the last row.
    std::vector<double> const & values() const { return values_; }

    /// The rows that no x meets, ascending.
    std::vector<int> const & hopeless() const { return hopeless_; }

    struct reading {
        int row;           ///< -1 when every value is -infinity
        double violation;  ///< its value less n * x
    };

    /// The row that x violates most, of equals the first, if `values` stand in the place of values().
    reading worst(std::vector<double> const & values, double const * x) const;

private:
    // Eight rows side by side, coordinate by coordinate, fill the vector registers in a pass.
    static constexpr int block_rows = 8;

    std::ptrdiff_t place(int row) const {
        return static_cast<std::ptrdiff_t>(row / block_rows) * unknowns_ * block_rows + row % block_rows;
    }

    int rows_, unknowns_;
    std::vector<double> normals_, values_;
    std::vector<int> hopeless_;
};

}  // namespace internal
}  // namespace datumfit
